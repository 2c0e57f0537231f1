#include "plugin/programs/ProgramLife.h"
#include "platform/loop/RunLoop.h"
#include "platform/processes/ProcessInfo.h"
#include "support/ChildProcess.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t client = 40;
constexpr std::uint32_t otherClient = 41;
constexpr auto main = ProgramLife::Role::main;

ProgramProcess processOf(const support::ChildProcess& child) {
    ProgramProcess process;
    process.pid = static_cast<std::uint32_t>(child.pid());
    process.startTime = platform::processStartTime(child.pid());
    return process;
}

class ProgramLifeTest : public testing::Test {
  protected:
    std::uint32_t first() const { return life_.first() != nullptr ? life_.first()->pid : 0; }

    platform::RunLoop loop_;
    int changes_ = 0;
    ProgramLife life_{loop_, [this] { ++changes_; }};
    support::ChildProcess child_{{"sleep", "60"}};
    support::ChildProcess other_{{"sleep", "60"}};
};

} // namespace

TEST_F(ProgramLifeTest, AProcessThatCannotBeWatchedGoesWithItsClient) {
    const ProgramProcess ended = processOf(child_);
    child_.stop(SIGKILL);
    ProgramProcess numberUsedAgain = ended;
    numberUsedAgain.pid = static_cast<std::uint32_t>(::getpid());
    for (const ProgramProcess& process : {ended, numberUsedAgain}) {
        life_.join(process, client, main);
        life_.join(process, otherClient, main);
        loop_.turn();
        life_.clientGone(client);
        EXPECT_EQ(first(), process.pid);
        life_.clientGone(otherClient);
        EXPECT_EQ(first(), 0U);
    }
}

TEST_F(ProgramLifeTest, OnlyTheErrorIsWithdrawnAndOnlyTheProcessReleased) {
    const ProgramProcess process = processOf(child_);
    life_.join(process, client, main);
    life_.join(process, client, main);
    life_.withdraw(process, client);
    EXPECT_EQ(first(), process.pid);
    life_.withdraw(process, client);
    EXPECT_EQ(first(), 0U);
    life_.withdraw(process, client);
    EXPECT_EQ(changes_, 1);

    life_.join(process, client, main);
    life_.join(process, client, main);
    life_.join(processOf(other_), client, main);
    life_.release(process, otherClient);
    EXPECT_EQ(first(), processOf(other_).pid) << "whichever client it is by";
}
