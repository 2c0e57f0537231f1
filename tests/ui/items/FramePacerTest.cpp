#include "ui/items/FramePacer.h"
#include "platform/loop/RunLoop.h"
#include "support/ManualClock.h"

#include <gtest/gtest.h>

#include <functional>

using namespace std::chrono_literals;

namespace {

struct Part final : FramePacer::Client {
    void frame() override {
        ++frames;
        if (then)
            then();
    }
    int frames = 0;
    std::function<void()> then;
};

class FramePacerTest : public testing::Test {
  protected:
    void pass(std::chrono::nanoseconds time) {
        clock_.advance(time);
        loop_.turn();
    }

    support::ManualClock clock_;
    platform::RunLoop loop_;
    FramePacer pacer_{loop_};
    Part one_;
    Part two_;
};

} // namespace

TEST_F(FramePacerTest, ABurstIsOneFrame) {
    for (int i = 0; i < 5; ++i) {
        pacer_.request(one_);
        pacer_.request(two_);
    }
    loop_.turn();
    EXPECT_EQ(one_.frames, 0) << "more may come";
    pass(5ms);
    EXPECT_EQ(one_.frames, 1);
    EXPECT_EQ(two_.frames, 1);
    pass(1s);
    EXPECT_EQ(one_.frames, 1);
}

TEST_F(FramePacerTest, ASecondHasSixtyFramesAtMost) {
    for (int i = 0; i < 1000; ++i) {
        pacer_.request(one_);
        pass(1ms);
    }
    EXPECT_LE(one_.frames, 60);
    EXPECT_GE(one_.frames, 55);
}

TEST_F(FramePacerTest, WhoWithdrawsIsNotCalledEvenFromWithinTheFrame) {
    pacer_.request(one_);
    pacer_.request(two_);
    one_.then = [this] {
        pacer_.withdraw(two_);
        pacer_.request(one_);
    };
    pass(20ms);
    EXPECT_EQ(one_.frames, 1);
    EXPECT_EQ(two_.frames, 0);
    pass(20ms);
    EXPECT_EQ(one_.frames, 2);
    pacer_.withdraw(one_);
    pass(20ms);
    EXPECT_EQ(one_.frames, 2);
}
