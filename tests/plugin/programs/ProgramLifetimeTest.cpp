#include "plugin/programs/ProgramLifetime.h"
#include "platform/loop/RunLoop.h"
#include "platform/processes/ProcessInfo.h"
#include "support/ChildProcess.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t client = 40;
constexpr std::uint32_t otherClient = 41;
constexpr auto main = ProgramLifetime::Role::main;

ProgramProcess processOf(const support::ChildProcess& child) {
    ProgramProcess process;
    process.pid = static_cast<std::uint32_t>(child.pid());
    process.startTime = platform::processStartTime(child.pid());
    return process;
}

class ProgramLifetimeTest : public testing::Test {
  protected:
    std::uint32_t first() const {
        return lifetime_.first() != nullptr ? lifetime_.first()->pid : 0;
    }

    platform::RunLoop loop_;
    int changes_ = 0;
    ProgramLifetime lifetime_{loop_, [this] { ++changes_; }};
    support::ChildProcess child_{{"sleep", "60"}};
    support::ChildProcess other_{{"sleep", "60"}};
};

} // namespace

TEST_F(ProgramLifetimeTest, AProcessThatCannotBeWatchedEndsWithItsClient) {
    const ProgramProcess ended = processOf(child_);
    child_.stop(SIGKILL);
    ProgramProcess numberUsedAgain = ended;
    numberUsedAgain.pid = static_cast<std::uint32_t>(::getpid());
    for (const ProgramProcess& process : {ended, numberUsedAgain}) {
        lifetime_.join(process, client, main);
        lifetime_.join(process, otherClient, main);
        loop_.turn();
        lifetime_.clientGone(client);
        EXPECT_EQ(first(), process.pid);
        lifetime_.clientGone(otherClient);
        EXPECT_EQ(first(), 0U);
    }
}

TEST_F(ProgramLifetimeTest, OnlyTheErrorIsWithdrawnAndOnlyTheProcessReleased) {
    const ProgramProcess process = processOf(child_);
    lifetime_.join(process, client, main);
    lifetime_.join(process, client, main);
    lifetime_.withdraw(process, client);
    EXPECT_EQ(first(), process.pid);
    lifetime_.withdraw(process, client);
    EXPECT_EQ(first(), 0U);
    lifetime_.withdraw(process, client);
    EXPECT_EQ(changes_, 1);

    lifetime_.join(process, client, main);
    lifetime_.join(process, client, main);
    lifetime_.join(processOf(other_), client, main);
    lifetime_.release(process, otherClient);
    EXPECT_EQ(first(), processOf(other_).pid) << "whichever client it is by";
}
