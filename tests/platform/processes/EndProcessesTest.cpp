#include "platform/processes/EndProcesses.h"

#include "support/ChildProcess.h"
#include "support/ManualClock.h"
#include "support/NamedCopy.h"

#include <gtest/gtest.h>

#include <csignal>
#include <future>
#include <string>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

constexpr int bySignal = 128;

/// Runs on another thread, as callers do.
std::future<bool> end(const std::string& name) {
    return std::async(std::launch::async, [name] { return platform::endProcesses(name); });
}

} // namespace

TEST(EndProcesses, EndsAllOfThatNameAndNoOthers) {
    const std::string longName = "a name that the kernel cuts at 15 bytes";
    const support::NamedCopy program("/bin/sleep", "end me " + std::to_string(::getpid()));
    const support::NamedCopy longer("/bin/sleep", longName + std::to_string(::getpid()));
    const support::NamedCopy other("/bin/sleep", program.name() + "x");
    support::ChildProcess first({program.path(), "600"});
    support::ChildProcess second({program.path(), "600"});
    support::ChildProcess third({longer.path(), "600"});
    support::ChildProcess bystander({other.path(), "600"});

    EXPECT_TRUE(end(program.name()).get());
    EXPECT_EQ(first.wait(), bySignal + SIGTERM);
    EXPECT_EQ(second.wait(), bySignal + SIGTERM);
    EXPECT_TRUE(end(longer.name()).get());
    EXPECT_EQ(third.wait(), bySignal + SIGTERM);
    EXPECT_TRUE(bystander.isRunning());
    EXPECT_TRUE(end(program.name()).get()) << "when there are none";
}

TEST(EndProcesses, KillsWhatIsStillThereAfterTwoSecondsAndNotBefore) {
    support::ManualClock clock;
    const support::NamedCopy shell("/bin/bash", "stay " + std::to_string(::getpid()));
    support::ChildProcess child(
        {shell.path(), "-c", "trap 'echo asked' TERM; echo ready; while :; do sleep 0.1; done"});
    ASSERT_TRUE(support::waitUntil([&] { return child.output() == "ready\n"; }));

    auto ended = end(shell.name());
    ASSERT_TRUE(support::waitUntil([&] { return child.outputSize() > 6; })) << "no SIGTERM";
    clock.advance(1999ms);
    EXPECT_EQ(ended.wait_for(50ms), std::future_status::timeout);
    EXPECT_TRUE(child.isRunning());
    clock.advance(1ms);
    EXPECT_TRUE(ended.get());
    EXPECT_EQ(child.wait(), bySignal + SIGKILL);
}
