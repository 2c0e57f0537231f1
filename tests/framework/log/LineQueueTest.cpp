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
    return {LineQueue::Kind::message, level, {}, text};
}

std::string textOf(const LineQueue::Record& record) {
    if (record.kind == LineQueue::Kind::gap)
        return std::to_string(record.dropped) + " dropped, level " + std::to_string(record.level);
    return std::string(record.text.substr(0, 10));
}

/// All texts that wait, given back as soon as they are read.
std::vector<std::string> takeAll(LineQueue& queue) {
    std::vector<std::string> texts;
    auto [chunks, gap] = queue.take();
    while (!chunks.empty()) {
        std::size_t offset = 0;
        LineQueue::Record record{};
        while (chunks.front().next(offset, record))
            texts.push_back(textOf(record));
        LineQueue::Chunks read;
        read.splice(read.end(), chunks, chunks.begin());
        queue.giveBack(std::move(read));
    }
    if (gap)
        texts.push_back(textOf(*gap));
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

TEST(LineQueue, AGapStandsWhereRecordsFoundNoRoom) {
    using Texts = std::vector<std::string>;
    LineQueue queue(2 * chunk, 4);
    const std::string half(chunk / 2, 'x'); // one a chunk
    EXPECT_EQ(queue.append(message(half), false), Demand::start);
    queue.append(message(half), false);
    const LineQueue::Content writing = queue.take();
    EXPECT_TRUE(queue.beginLingering()); // as if they were being written
    EXPECT_EQ(queue.append(message(half), false), Demand::hurry);
    EXPECT_FALSE(queue.wants(5));
    queue.append({LineQueue::Kind::levelChange, 5, {}, half}, false);
    EXPECT_TRUE(queue.wants(5));
    EXPECT_FALSE(queue.beginLingering()) << "somebody has to write the gap";
    EXPECT_FALSE(queue.endLingering());
    EXPECT_EQ(takeAll(queue), Texts{"2 dropped, level 5"});
    EXPECT_TRUE(queue.beginLingering());

    LineQueue::Chunks written;
    written.emplace_back(chunk);
    queue.giveBack(std::move(written)); // one of the two
    queue.append(message("before"), false);
    for (int i = 0; i < 3; ++i)
        queue.append(message(std::string(chunk, 'x')), false);
    queue.append(message("after"), false);
    queue.append(message(std::string(chunk, 'x')), false);
    EXPECT_EQ(takeAll(queue),
              (Texts{"before", "3 dropped, level 5", "after", "1 dropped, level 5"}));
}

TEST(LineQueue, AGapHasRoomBeforeARecordThatFillsTheMemory) {
    constexpr std::size_t header = 24;
    const std::string filling(chunk - 2 * header, 'x');
    for (const bool fits : {true, false}) {
        LineQueue queue(chunk, 4);
        queue.append(message(std::string(chunk, 'y')), false);
        queue.append(message(fits ? filling : filling + "x"), false);
        const std::vector<std::string> fitting{"1 dropped, level 4", "xxxxxxxxxx"};
        EXPECT_EQ(takeAll(queue), fits ? fitting : std::vector<std::string>{"2 dropped, level 4"});
    }
}
