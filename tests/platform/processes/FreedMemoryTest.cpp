#include "platform/processes/FreedMemory.h"

#include <gtest/gtest.h>

#include <malloc.h>
#include <memory>
#include <vector>

TEST(FreedMemory, LeavesNoSmallBlockToMerge) {
    constexpr std::size_t count = 10'000;
    const auto bytesToMerge = [] { return ::mallinfo2().fsmblks; }; // other threads' too
    const std::size_t before = bytesToMerge();
    std::vector<std::unique_ptr<int>> blocks(count);
    for (auto& block : blocks)
        block = std::make_unique<int>();
    for (auto& block : blocks)
        block.reset();
    platform::mergeFreedMemory();
    EXPECT_LT(bytesToMerge(), before + count * sizeof(int));
}
