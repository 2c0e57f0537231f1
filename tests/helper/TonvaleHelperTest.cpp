#include "platform/bus/SessionBus.h"
#include "support/BusConnection.h"
#include "support/ChildProcess.h"
#include "support/PrivateBus.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <QDBusConnectionInterface>
#include <QDBusReply>

using support::ChildProcess;
using support::waitUntil;

namespace {

bool isOwned(const support::BusConnection& bus) {
    return bus->interface()->isServiceRegistered("com.quarnel.TonvaleHelper").value();
}

} // namespace

TEST(TonvaleHelper, IsSingleAndEndsWithItsSession) {
    const support::PrivateFolder folder;
    const support::ScopedVariable runtime("XDG_RUNTIME_DIR", folder.path());
    EXPECT_EQ(support::runCommand({TONVALE_HELPER}).status, 0) << "there is no bus";
    std::optional<support::PrivateBus> bus(std::in_place);
    ChildProcess first({TONVALE_HELPER});
    {
        const support::BusConnection ours(bus->address());
        ASSERT_TRUE(waitUntil([&] { return isOwned(ours); }));
        const QDBusReply<QDBusVariant> shown = [&] {
            auto get = QDBusMessage::createMethodCall("com.quarnel.TonvaleHelper",
                                                      "/com/quarnel/TonvaleHelper",
                                                      "org.freedesktop.DBus.Properties", "Get");
            get.setArguments({"com.quarnel.TonvaleHelper", "Shown"});
            return ours->call(get);
        }();
        EXPECT_EQ(shown.value().variant(), QVariant(false)) << "nobody watches";
        EXPECT_EQ(support::runCommand({TONVALE_HELPER}).status, 0);
        EXPECT_TRUE(first.isRunning());
    }
    bus.reset();
    EXPECT_EQ(first.wait(), 0) << first.output();
}

TEST(TonvaleHelper, AnswersItsOptions) {
    EXPECT_EQ(support::runCommand({TONVALE_HELPER, "--version"}).output,
              "TonvaleHelper " TONVALE_VERSION "\n");
    EXPECT_EQ(support::runCommand({TONVALE_HELPER, "--help"}).status, 0);
    EXPECT_EQ(support::runCommand({TONVALE_HELPER, "--nonsense"}).status, 2);
}
