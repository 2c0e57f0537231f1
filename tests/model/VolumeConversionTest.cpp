#include "model/VolumeConversion.h"
#include "model/WindowSize.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using VolumeConversion::percentOfFraction;

TEST(VolumeConversion, FractionsAreCutOffNotRounded) {
    EXPECT_EQ(percentOfFraction(0.999), 99);
    EXPECT_EQ(percentOfFraction(0.0), 0);
    EXPECT_EQ(percentOfFraction(0.005), 0);
    EXPECT_EQ(percentOfFraction(1.0), 100);
    EXPECT_EQ(percentOfFraction(1e300), 100);
    EXPECT_EQ(percentOfFraction(-0.5), 0);
    EXPECT_EQ(percentOfFraction(std::nan("")), 0);
}

TEST(VolumeConversion, EveryPercentHasTheSmallestFractionThatMeansIt) {
    for (int percent = 0; percent <= 100; ++percent) {
        const float fraction = VolumeConversion::fractionForPercent(percent);
        EXPECT_EQ(static_cast<int>(static_cast<double>(fraction) * 100.0), percent);
        const float less = std::nextafter(fraction, -1.0F);
        EXPECT_TRUE(percent == 0 ? std::fpclassify(fraction) == FP_ZERO
                                 : static_cast<int>(static_cast<double>(less) * 100.0) < percent)
            << percent;
    }
    EXPECT_FLOAT_EQ(VolumeConversion::fractionForPercent(-1), 0.0F);
    EXPECT_FLOAT_EQ(VolumeConversion::fractionForPercent(1000), 1.0F);
}

TEST(VolumeConversion, LevelsAreClampedAndCutOff) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const struct {
        float level;
        qint64 percent;
    } cases[] = {{1.7F, 100}, {-0.3F, 0},      {std::nanf(""), 0}, {0.456F, 45},
                 {0.0F, 0},   {-0.0F, 0},      {1.0F, 100},        {0.9999F, 99},
                 {1e-30F, 0}, {infinity, 100}, {-infinity, 0},     {0.759F, 75}};
    for (const auto& each : cases)
        EXPECT_EQ(VolumeConversion::percentOfLevel(VolumeConversion::clampedLevel(each.level)),
                  each.percent)
            << each.level;
}

TEST(WindowSize, TheHeightSnapsToWholeItems) {
    const WindowSize::Heights heights{40.0, 22.0};
    const auto snapped = [&](double height) {
        return WindowSize::snapped({512.5, height}, heights).height();
    };
    EXPECT_DOUBLE_EQ(snapped(22 + 2.5 * 40), 22 + 3 * 40) << "ties go up";
    EXPECT_DOUBLE_EQ(snapped(22 + 2.4 * 40), 22 + 2 * 40);
    EXPECT_DOUBLE_EQ(snapped(22 + 3 * 40), 22 + 3 * 40);
    EXPECT_DOUBLE_EQ(snapped(22 + 4 * 40 - 1), 22 + 4 * 40);
    EXPECT_DOUBLE_EQ(snapped(0), 0) << "below the title bar there is nothing to snap";
    EXPECT_DOUBLE_EQ(WindowSize::snapped({512.5, 100}, heights).width(), 512.5);
    // Half of an odd height is cut off, as are fractions of heights.
    EXPECT_DOUBLE_EQ(WindowSize::snapped({0, 10 + 41 + 20}, {41.9, 10.9}).height(), 10 + 2 * 41);
    EXPECT_DOUBLE_EQ(WindowSize::snapped({0, 10 + 41 + 19}, {41.9, 10.9}).height(), 10 + 41);
    EXPECT_DOUBLE_EQ(WindowSize::snapped({0, 333}, {0.5, 22}).height(), 333);
}

TEST(WindowSize, AFrameIsReadBackAndNothingElseIs) {
    const QRect frame(-5, 7, 640, 480);
    EXPECT_EQ(WindowSize::frameFromText(WindowSize::frameText(frame)), frame);
    for (const char* const text : {"", "1 2 3", "1 2 3 4 5", "a b c d", "1 2 0 4", "1 2 3 -4",
                                   "1  2 3", "99999999999 1 2 3", "2000000000 2 2000000000 4"})
        EXPECT_EQ(WindowSize::frameFromText(QLatin1String(text)), std::nullopt) << text;
}
