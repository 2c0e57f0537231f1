#include "plugin/ProgramLife.h"
#include "platform/loop/RunLoop.h"
#include "platform/processes/ProcessInfo.h"
#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

constexpr std::uint32_t client = 40;
constexpr std::uint32_t otherClient = 41;

platform::StreamProcess processOf(const support::ChildProcess& child) {
    platform::StreamProcess process;
    process.pid = static_cast<std::uint32_t>(child.pid());
    process.startTime = platform::processStartTime(child.pid());
    return process;
}

class ProgramLifeTest : public testing::Test {
  protected:
    std::uint32_t first() const { return life_->first() != nullptr ? life_->first()->pid : 0; }

    platform::RunLoop loop_;
    int changes_ = 0;
    std::unique_ptr<ProgramLife> life_ =
        std::make_unique<ProgramLife>(loop_, [this] { ++changes_; });
    support::ChildProcess child_{{"sleep", "60"}};
};

} // namespace

TEST_F(ProgramLifeTest, AProcessIsWatchedWhateverBecomesOfItsClients) {
    life_->join(processOf(child_), client);
    life_->clientGone(client);
    EXPECT_EQ(first(), processOf(child_).pid);
    child_.stop(SIGKILL);
    loop_.turn();
    EXPECT_EQ(first(), 0U);
    EXPECT_EQ(changes_, 1);
}

TEST_F(ProgramLifeTest, AProcessThatCannotBeWatchedGoesWithItsClient) {
    platform::StreamProcess ended = processOf(child_);
    child_.stop(SIGKILL);
    platform::StreamProcess numberUsedAgain = ended;
    numberUsedAgain.pid = static_cast<std::uint32_t>(::getpid());
    for (const platform::StreamProcess& process : {ended, numberUsedAgain}) {
        life_->join(process, client);
        life_->join(process, otherClient);
        loop_.turn();
        life_->clientGone(client);
        EXPECT_EQ(first(), process.pid);
        life_->clientGone(otherClient);
        EXPECT_EQ(first(), 0U);
    }
}

TEST_F(ProgramLifeTest, OnlyTheErrorIsWithdrawn) {
    const platform::StreamProcess process = processOf(child_);
    life_->join(process, client);
    life_->join(process, client);
    life_->withdraw(process, client);
    EXPECT_EQ(first(), process.pid);
    life_->withdraw(process, client);
    EXPECT_EQ(first(), 0U);
    life_->withdraw(process, client);
    EXPECT_EQ(changes_, 1);
}

TEST_F(ProgramLifeTest, MayBeDestroyedWhenItEnds) {
    life_ = std::make_unique<ProgramLife>(loop_, [this] {
        ++changes_;
        life_.reset();
    });
    life_->join(processOf(child_), client);
    child_.stop(SIGKILL);
    loop_.turn();
    EXPECT_EQ(life_, nullptr);
    EXPECT_EQ(changes_, 1);
}
