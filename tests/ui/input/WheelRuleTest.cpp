#include "ui/input/WheelRule.h"

#include "support/ManualClock.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

TEST(WheelRule, ChangesAVolumeOnlyOverASliderAndNeverSoonAfterAScroll) {
    support::ManualClock clock;
    WheelRule rule;
    EXPECT_EQ(rule.use(true), WheelRule::Use::volume);
    EXPECT_EQ(rule.use(false), WheelRule::Use::scroll);
    EXPECT_EQ(rule.use(true), WheelRule::Use::scroll);
    clock.advance(299ms);
    EXPECT_EQ(rule.use(true), WheelRule::Use::scroll) << "which goes on, and is a scroll itself";
    clock.advance(299ms);
    EXPECT_EQ(rule.use(true), WheelRule::Use::scroll);
    clock.advance(300ms);
    EXPECT_EQ(rule.use(true), WheelRule::Use::volume);
    EXPECT_EQ(rule.use(true), WheelRule::Use::volume);
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
