#include "plugin/volume/VolumeRamp.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

using namespace std::chrono_literals;

class VolumeRampTest : public testing::Test {
  protected:
    /// Makes a step when it is due, and returns the new percent.
    double step() {
        now_ = std::max(now_, ramp_.due());
        return 100 * std::cbrt(static_cast<double>(ramp_.step(now_)));
    }

    VolumeRamp::TimePoint now_{std::chrono::hours(1)};
    VolumeRamp ramp_;
};

} // namespace

TEST_F(VolumeRampTest, MovesInSmallStepsAtAnEvenPace) {
    for (const auto& [from, to, steps] : {std::tuple{1.0F, 0.0F, 20},
                                          {0.0F, 1.0F, 20},
                                          {1.0F, 0.125F, 10},
                                          {0.0F, 1e-4F, 1},
                                          {1.728F, 1.0F, 4},
                                          {0.5F, 0.5F, 1}}) {
        const auto start = now_ += 1s;
        ramp_.aim(from, to, now_);
        double last = 100 * std::cbrt(static_cast<double>(from));
        int taken = 0;
        while (ramp_.isRunning()) {
            EXPECT_EQ(ramp_.due(), start + taken * VolumeRamp::interval) << "the first at once";
            const double next = step();
            EXPECT_LE(std::abs(next - last), 5.01);
            last = next;
            ++taken;
        }
        EXPECT_EQ(taken, steps) << from << " " << to;
        EXPECT_NEAR(last, 100 * std::cbrt(static_cast<double>(to)), 1e-6) << "exactly the end";
    }
}

TEST_F(VolumeRampTest, ANewerAimRedirectsItFromWhereItIsWithoutAFasterStep) {
    ramp_.aim(1.0F, 0.0F, now_);
    EXPECT_NEAR(step(), 95, 0.01);
    EXPECT_NEAR(step(), 90, 0.01);
    const auto due = ramp_.due();
    now_ += 5ms;
    ramp_.aim(0.5F, 1.0F, now_);
    EXPECT_EQ(ramp_.due(), due);
    EXPECT_NEAR(step(), 95, 0.01);
    EXPECT_NEAR(step(), 100, 0.01);
    EXPECT_FALSE(ramp_.isRunning());
    now_ += 1ms;
    ramp_.aim(1.0F, 0.0F, now_);
    EXPECT_EQ(ramp_.due(), now_ - 1ms + VolumeRamp::interval);
}

TEST_F(VolumeRampTest, AStepThatComesLateIsNotMadeUpFor) {
    ramp_.aim(1.0F, 0.0F, now_);
    step();
    now_ += 10 * VolumeRamp::interval;
    EXPECT_NEAR(step(), 90, 0.01);
    EXPECT_EQ(ramp_.due(), now_ + VolumeRamp::interval);
}
