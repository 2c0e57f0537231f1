#include "framework/log/LineQueue.h"

#include "framework/log/qnlog.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using QN::log::LineQueue;
using Demand = LineQueue::Demand;

namespace {

constexpr std::size_t chunk = 65536;

LineQueue::Record message(std::string_view text, std::uint32_t level = 3) {
    return {false, level, {}, text};
}

/// All texts that wait, given back as soon as they are read.
std::vector<std::string> takeAll(LineQueue& queue) {
    std::vector<std::string> texts;
    LineQueue::Chunks chunks = queue.take();
    while (!chunks.empty()) {
        std::size_t offset = 0;
        LineQueue::Record record{};
        while (chunks.front().next(offset, record))
            texts.emplace_back(record.text);
        LineQueue::Chunks read;
        read.splice(read.end(), chunks, chunks.begin());
        queue.giveBack(std::move(read));
    }
    return texts;
}

} // namespace

TEST(LineQueue, AsksForAWriterOnceAndHurriesALingeringOneOnlyWhenItMatters) {
    LineQueue queue(16 * chunk, 4);
    EXPECT_EQ(queue.append(message("a"), false), Demand::start);
    EXPECT_EQ(queue.append(message("b"), true), Demand::none);
    EXPECT_EQ(takeAll(queue), (std::vector<std::string>{"a", "b"}));
    EXPECT_TRUE(queue.beginLingering());
    EXPECT_EQ(queue.append(message("c"), false), Demand::none);
    EXPECT_EQ(queue.append(message("d"), true), Demand::hurry);
    EXPECT_EQ(queue.append(message("e"), true), Demand::none);
    EXPECT_FALSE(queue.endLingering());
    EXPECT_FALSE(queue.beginLingering());
    EXPECT_EQ(takeAll(queue), (std::vector<std::string>{"c", "d", "e"}));
    EXPECT_TRUE(queue.beginLingering());
    EXPECT_TRUE(queue.hurry());
    EXPECT_FALSE(queue.hurry());
    EXPECT_TRUE(queue.endLingering());
    EXPECT_FALSE(queue.hurry());
    EXPECT_EQ(queue.append(message("f"), false), Demand::start);
    queue.writerFailed();
    EXPECT_EQ(queue.append(message("g"), false), Demand::start);
    EXPECT_EQ(takeAll(queue), (std::vector<std::string>{"f", "g"}));
}

TEST(LineQueue, RemembersALevelThatHasNoRoom) {
    LineQueue queue(chunk, 4);
    const std::string text(chunk / 2, 'x'); // one a chunk
    queue.append(message(text), false);
    EXPECT_FALSE(queue.wants(5));
    queue.append({true, 5, {}, text}, false);
    EXPECT_TRUE(queue.wants(5));
    EXPECT_EQ(queue.takeLostLevel(), 5U);
    EXPECT_EQ(queue.takeLostLevel(), std::nullopt);
}
