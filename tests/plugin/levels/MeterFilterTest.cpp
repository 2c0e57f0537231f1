#include "plugin/levels/MeterFilter.h"

#include <gtest/gtest.h>

#include <algorithm>

TEST(MeterFilterTest, HasInputsForAllThatAreNeededAndFewToSpare) {
    for (std::size_t needed = 1; needed <= 2 * MeterFilter::mostInputs; ++needed) {
        const std::size_t inputs = MeterFilter::inputsFor(needed);
        EXPECT_GE(inputs, std::min(needed, MeterFilter::mostInputs)) << needed;
        EXPECT_LE(inputs, MeterFilter::mostInputs) << needed;
        EXPECT_LE(inputs, std::max(MeterFilter::fewestInputs, needed * 3 / 2)) << needed;
    }
}
