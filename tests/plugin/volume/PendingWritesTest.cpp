#include "plugin/volume/PendingWrites.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using Writes = PendingWrites<int>;

class PendingWritesTest : public testing::Test {
  protected:
    bool takes(int value) { return writes_.takeEcho(value, std::equal_to<int>()); }

    Writes writes_;
};

} // namespace

TEST_F(PendingWritesTest, EachComesBackOnceAndThoseBeforeItNoMore) {
    for (const int value : {1, 2, 3, 4})
        writes_.add(value);
    EXPECT_FALSE(takes(5));
    EXPECT_TRUE(takes(1));
    EXPECT_FALSE(takes(1));
    EXPECT_TRUE(takes(3));
    EXPECT_FALSE(takes(2));
    EXPECT_EQ(*writes_.newest(), 4);
    EXPECT_TRUE(takes(4));
    EXPECT_EQ(writes_.newest(), nullptr);
}

TEST_F(PendingWritesTest, TheOldestOfTooManyAreForgotten) {
    for (int value = 0; value <= static_cast<int>(Writes::most); ++value)
        writes_.add(value);
    EXPECT_FALSE(takes(0));
    EXPECT_TRUE(takes(1));
}
