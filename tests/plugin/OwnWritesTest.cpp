#include "plugin/OwnWrites.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using Writes = OwnWrites<int>;

class OwnWritesTest : public testing::Test {
  protected:
    bool takes(int value, Writes::TimePoint now) {
        return writes_.takeEcho(value, now, std::equal_to<int>());
    }

    const Writes::TimePoint start_{std::chrono::hours(1)};
    Writes writes_;
};

} // namespace

TEST_F(OwnWritesTest, EachComesBackOnceAndThoseBeforeItNoMore) {
    for (const int value : {1, 2, 3, 4})
        writes_.add(value, start_);
    EXPECT_FALSE(takes(5, start_));
    EXPECT_TRUE(takes(1, start_));
    EXPECT_FALSE(takes(1, start_));
    EXPECT_TRUE(takes(3, start_));
    EXPECT_FALSE(takes(2, start_));
    EXPECT_EQ(*writes_.newest(start_), 4);
    EXPECT_TRUE(takes(4, start_));
    EXPECT_EQ(writes_.newest(start_), nullptr);
}

TEST_F(OwnWritesTest, WhatDoesNotComeBackIsForgotten) {
    writes_.add(1, start_);
    writes_.add(2, start_ + std::chrono::milliseconds(1));
    EXPECT_FALSE(takes(1, start_ + Writes::longestWay));
    EXPECT_TRUE(takes(2, start_ + Writes::longestWay));
    for (int value = 0; value <= static_cast<int>(Writes::most); ++value)
        writes_.add(value, start_);
    EXPECT_FALSE(takes(0, start_)) << "the list is bounded";
    EXPECT_TRUE(takes(1, start_));
}
