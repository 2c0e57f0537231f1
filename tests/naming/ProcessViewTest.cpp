#include "naming/ProcessView.h"
#include "platform/processes/ProcessInfo.h"
#include "support/ChildProcess.h"
#include "support/ScopedVariable.h"
#include "support/WaitUntil.h"

#include <gmock/gmock.h>

#include <unistd.h>

namespace {

/// A child that has its arguments already.
ProcessRecord recordOf(const support::ChildProcess& child) {
    const ProcessView view;
    std::optional<ProcessRecord> record;
    EXPECT_TRUE(support::waitUntil([&] {
        record = view.process(child.pid());
        // In the midst of its exec a process has the executable but no arguments or environment.
        return record && record->executable.ends_with("/sleep") && !record->arguments.empty();
    }));
    return record.value_or(ProcessRecord());
}

} // namespace

TEST(ProcessView, SeesAProcessAndNothingOfOneThatHasEnded) {
    support::ChildProcess child({"sleep", "60"});
    const ProcessRecord record = recordOf(child);
    EXPECT_EQ(record.pid, child.pid());
    EXPECT_EQ(record.parent, ::getpid());
    EXPECT_EQ(record.session, ::getsid(child.pid()));
    EXPECT_EQ(record.user, ::geteuid());
    EXPECT_EQ(record.startTime, platform::processStartTime(child.pid()));
    EXPECT_THAT(record.arguments, testing::ElementsAre("sleep", "60"));
    EXPECT_FALSE(record.controlGroups.empty());
    const ProcessView view;
    EXPECT_THAT(view.processesOf(::geteuid()), testing::IsSupersetOf({::getpid(), child.pid()}));
    child.stop(SIGKILL);
    EXPECT_FALSE(view.process(child.pid()).has_value());
}

TEST(ProcessView, TakesAnEntryOnlyFromAnEnvironmentThatNamesTheProcess) {
    const char* const file = "/usr/share/applications/x.desktop";
    const support::ScopedVariable entry("GIO_LAUNCHED_DESKTOP_FILE", file);
    {
        // As one has it that inherits the environment of what the desktop has started.
        const support::ScopedVariable number("GIO_LAUNCHED_DESKTOP_FILE_PID",
                                             std::to_string(::getpid()));
        const support::ChildProcess child({"sleep", "60"});
        EXPECT_EQ(recordOf(child).launchedEntry, "");
    }
    const support::ChildProcess child(
        {"sh", "-c", "GIO_LAUNCHED_DESKTOP_FILE_PID=$$ exec sleep 60"});
    EXPECT_EQ(recordOf(child).launchedEntry, file);
}

TEST(ProcessView, ReadsCommandLinesOfAnyLength) {
    const std::string longOne(70000, 'x');
    const support::ChildProcess child({"bash", "-c", "sleep 60; true", longOne, "end"});
    const ProcessView view;
    std::vector<std::string> arguments;
    EXPECT_TRUE(support::waitUntil([&] {
        const auto record = view.process(child.pid());
        arguments = record ? record->arguments : std::vector<std::string>();
        return arguments.size() == 5;
    }));
    EXPECT_THAT(arguments, testing::ElementsAre("bash", "-c", "sleep 60; true", longOne, "end"));
}
