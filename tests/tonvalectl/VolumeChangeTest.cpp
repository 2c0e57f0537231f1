#include "settings/VolumeChange.h"

#include <gtest/gtest.h>

TEST(VolumeChangeTest, ReadsPercentsAndStepsAndNothingElse) {
    const struct {
        const char* text;
        VolumeChange change;
    } good[] = {{"0", {0, false}},      {"40", {40, false}}, {"100%", {100, false}},
                {"007%", {7, false}},   {"+5%", {5, true}},  {"-5", {-5, true}},
                {"+100%", {100, true}}, {"-0", {0, true}}};
    for (const auto& [text, change] : good)
        EXPECT_EQ(VolumeChange::parse(text), change) << text;
    for (const char* const text : {"", "%", "+", "101", "+101%", "--5", "4 0", " 40", "40%%", "4.5",
                                   "0x10", "loud", "99999999999999999999"})
        EXPECT_EQ(VolumeChange::parse(text), std::nullopt) << text;
}

TEST(VolumeChangeTest, AStepEndsAtTheEnds) {
    EXPECT_EQ((VolumeChange{30, false}.appliedTo(70)), 30);
    EXPECT_EQ((VolumeChange{-5, true}.appliedTo(70)), 65);
    EXPECT_EQ((VolumeChange{-5, true}.appliedTo(3)), 0);
    EXPECT_EQ((VolumeChange{5, true}.appliedTo(98)), 100);
}
