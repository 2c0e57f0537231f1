#include "ui/input/WheelPolicy.h"

#include "support/ManualClock.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

TEST(WheelPolicy, ChangesAVolumeOnlyOverASliderAndNeverSoonAfterAScroll) {
    support::ManualClock clock;
    WheelPolicy rule;
    EXPECT_EQ(rule.use(true), WheelPolicy::Use::volume);
    EXPECT_EQ(rule.use(false), WheelPolicy::Use::scroll);
    EXPECT_EQ(rule.use(true), WheelPolicy::Use::scroll);
    clock.advance(299ms);
    EXPECT_EQ(rule.use(true), WheelPolicy::Use::scroll) << "which goes on, and is a scroll itself";
    clock.advance(299ms);
    EXPECT_EQ(rule.use(true), WheelPolicy::Use::scroll);
    clock.advance(300ms);
    EXPECT_EQ(rule.use(true), WheelPolicy::Use::volume);
    EXPECT_EQ(rule.use(true), WheelPolicy::Use::volume);
}

TEST(WheelSteps, SmallTurnsAddUpAndATurnBackBeginsAnew) {
    WheelSteps steps;
    EXPECT_EQ(steps.add(0.4), 0);
    EXPECT_EQ(steps.add(0.4), 0);
    EXPECT_EQ(steps.add(0.4), 1);
    EXPECT_EQ(steps.add(3.1), 3);
    EXPECT_EQ(steps.add(-0.9), 0) << "of what was left nothing counts";
    EXPECT_EQ(steps.add(-0.2), -1);
}
