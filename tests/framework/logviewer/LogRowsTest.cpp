#include "framework/logviewer/LogHeights.h"
#include "framework/logviewer/LogIndex.h"
#include "framework/logviewer/LogVisibleRows.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <vector>

using namespace QN::logviewer;

TEST(LogHeights, AreThoseOfThePlainSums) {
    std::mt19937 random(7);
    std::vector<std::int64_t> plain;
    LogHeights heights([&](std::size_t first, std::size_t last) {
        return std::accumulate(plain.begin() + static_cast<std::ptrdiff_t>(first),
                               plain.begin() + static_cast<std::ptrdiff_t>(last), std::int64_t{0});
    });
    for (int round = 0; round < 40; ++round) {
        if (round % 5 == 0) {
            for (auto& height : plain)
                height = 1 + random() % 100;
            heights.invalidate();
            while (heights.refresh()) {
            }
        }
        if (!plain.empty())
            plain.back() += 10; // the last row may have changed
        const std::size_t count = plain.size() + (round == 20 ? 100'000 : random() % 900);
        while (plain.size() < count)
            plain.push_back(1 + random() % 100);
        heights.setCount(plain.size());
        EXPECT_EQ(heights.refresh(), round == 20) << "a hundred blocks";
        while (heights.refresh()) {
        }
        std::int64_t top = 0;
        for (std::size_t row = 0; row < plain.size(); top += plain[row++]) {
            if (row % 97 != 0)
                continue;
            ASSERT_EQ(heights.topOf(row), top);
            const auto offset = static_cast<std::int64_t>(random()) % plain[row];
            const LogHeights::Place place = heights.placeAt(top + offset);
            ASSERT_EQ(place.row, row);
            ASSERT_EQ(place.offset, offset);
        }
        ASSERT_EQ(heights.total(), top);
    }
    EXPECT_EQ(heights.placeAt(heights.total() + 5).row, plain.size() - 1);
}

TEST(LogVisibleRows, AreThoseOfTheLevelsAndTheSearch) {
    LogIndex index;
    LogPiece piece;
    for (std::uint64_t row = 0; row < 10'000; ++row)
        piece.rows.emplace_back(row * 20, static_cast<std::uint32_t>(row % 5));
    piece.hours.push_back({0, {}});
    index.append(piece);
    LogVisibleRows rows;
    rows.grow(index);
    EXPECT_EQ(rows.count(), 10'000U);
    rows.reset(0b110, false);
    rows.grow(index);
    ASSERT_EQ(rows.count(), 4000U);
    EXPECT_EQ(rows.rowAt(2), 6U);
    EXPECT_EQ(rows.placeOf(6), 2U);
    EXPECT_EQ(rows.placeOf(8), 4U) << "the next one that is shown: 11";
    EXPECT_EQ(rows.placeOf(9'999), 4000U);
    rows.reset(0b110, true);
    rows.grow(index);
    for (const std::size_t row : {1U, 3U, 3U, 6U})
        rows.add(index, row);
    ASSERT_EQ(rows.count(), 2U);
    EXPECT_EQ(rows.rowAt(1), 6U);
}
