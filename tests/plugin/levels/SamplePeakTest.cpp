#include "plugin/levels/SamplePeak.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

TEST(SamplePeakTest, TheGreatestSampleIsFoundWhereverItIsAndWhateverItsSign) {
    for (const std::size_t count : {1U, 7U, 8U, 9U, 1024U, 1027U}) {
        for (std::size_t place = 0; place < count; ++place) {
            std::vector<float> samples(count, 0.1F);
            samples[place] = place % 2 == 0 ? 0.7F : -0.7F;
            ASSERT_EQ(samplePeak(samples), 0.7F) << place << " of " << count;
        }
    }
    EXPECT_EQ(samplePeak({}), 0.0F);
}

TEST(SamplePeakTest, WhatIsNotANumberHidesNoOtherSample) {
    constexpr float none = std::numeric_limits<float>::quiet_NaN();
    std::vector<float> samples(19, none);
    EXPECT_EQ(samplePeak(samples), 0.0F);
    samples[5] = 0.25F;
    samples[18] = -0.5F;
    EXPECT_EQ(samplePeak(samples), 0.5F);
    samples[18] = none;
    EXPECT_EQ(samplePeak(samples), 0.25F);
}
