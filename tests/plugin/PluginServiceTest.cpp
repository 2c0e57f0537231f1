#include "plugin/host/PluginService.h"
#include "plugin/host/StatusCommand.h"

#include "support/PrivateBus.h"
#include "support/SystemLogRecorder.h"
#include "support/WaitUntil.h"

#include <gmock/gmock.h>

#include <QDBusConnection>

#include <optional>
#include <stdexcept>

using testing::HasSubstr;

namespace {

std::vector<std::string> call(const std::string& method) {
    return {"busctl", "--user", "call", "com.quarnel.Tonvale.Plugin", "/com/quarnel/Tonvale/Plugin",
            method};
}

/// What another program is answered while this one serves the bus.
std::string answerTo(const std::string& interface, const std::string& method) {
    auto arguments = call(interface);
    arguments.push_back(method);
    return support::runCommand(arguments).output;
}

} // namespace

// One test for one bus: Qt connects to the session bus once in a process.
TEST(PluginService, AnswersForAsLongAsItIsThereAndLosesTheBusWithoutHarm) {
    std::optional<support::PrivateBus> bus(std::in_place);
    testing::internal::CaptureStderr();
    EXPECT_EQ(printPluginStatus(), 1);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("no plug-in runs"));

    support::SystemLogRecorder log;
    std::string text = "näme\n";
    std::optional<PluginService> service(std::in_place, [&text] {
        if (text.empty())
            throw std::runtime_error("no status");
        return text;
    });
    EXPECT_EQ(answerTo("com.quarnel.Tonvale.Plugin", "Status"), "s \"n\\303\\244me\\n\"\n");
    EXPECT_THAT(answerTo("org.freedesktop.DBus.Introspectable", "Introspect"),
                HasSubstr(R"(<method name=\"Status\">)"));
    text.clear();
    EXPECT_EQ(answerTo("com.quarnel.Tonvale.Plugin", "Status"), "s \"\"\n");
    EXPECT_EQ(log.count("no status"), 1U);

    bus.reset();
    ASSERT_TRUE(support::waitUntil([] { return !QDBusConnection::sessionBus().isConnected(); }));
    Q_EMIT service->ChangedElsewhere(1, 50, false); // nobody hears it
    service.reset();
    service.emplace([] { return std::string(); });
    testing::internal::CaptureStderr();
    EXPECT_EQ(printPluginStatus(), 1);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("session bus"));
}
