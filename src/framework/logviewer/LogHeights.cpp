#include "framework/logviewer/LogHeights.h"

#include <algorithm>
#include <numeric>

namespace QN::logviewer {

void LogHeights::sum(std::size_t block) {
    const std::size_t first = block * blockSize;
    blocks_[block] = estimate_(first, std::min(first + blockSize, count_));
}

/// Few blocks are summed at once. Of many, the first and the last one are, and until refresh()
/// comes to the others, they count as much as the first.
void LogHeights::setCount(std::size_t count) {
    const std::size_t first = count_ > 0 ? (std::min(count_, count) - 1) / blockSize : 0;
    count_ = count;
    blocks_.resize((count + blockSize - 1) / blockSize);
    fresh_ = std::min(fresh_, blocks_.size());
    if (count == 0)
        return;
    sum(first);
    const bool areFew = blocks_.size() - first <= blocksAtOnce;
    for (std::size_t block = first + 1; block + 1 < blocks_.size(); ++block) {
        if (areFew)
            sum(block);
        else
            blocks_[block] = blocks_[first];
    }
    sum(blocks_.size() - 1);
    if (fresh_ >= first)
        fresh_ = areFew ? blocks_.size() : first + 1;
}

void LogHeights::reset(std::size_t count) {
    count_ = 0;
    fresh_ = 0;
    blocks_.clear();
    setCount(count);
}

bool LogHeights::refresh() {
    const std::size_t end = std::min(fresh_ + blocksAtOnce, blocks_.size());
    for (; fresh_ < end; ++fresh_)
        sum(fresh_);
    return fresh_ < blocks_.size();
}

std::int64_t LogHeights::total() const noexcept {
    return std::accumulate(blocks_.begin(), blocks_.end(), std::int64_t{0});
}

std::int64_t LogHeights::topOf(std::size_t row) const {
    const std::size_t block = row / blockSize;
    const auto end = blocks_.begin() + static_cast<std::ptrdiff_t>(std::min(block, blocks_.size()));
    return std::accumulate(blocks_.begin(), end, std::int64_t{0}) +
           estimate_(block * blockSize, row);
}

LogHeights::Place LogHeights::placeAt(std::int64_t height) const {
    std::size_t block = 0;
    for (; block + 1 < blocks_.size() && height >= blocks_[block]; ++block)
        height -= blocks_[block];
    const std::size_t end = std::min((block + 1) * blockSize, count_);
    for (std::size_t row = block * blockSize; row + 1 < end; ++row) {
        const std::int64_t rowHeight = estimate_(row, row + 1);
        if (height < rowHeight)
            return {row, std::max<std::int64_t>(height, 0)};
        height -= rowHeight;
    }
    return {end - 1, std::clamp<std::int64_t>(height, 0, estimate_(end - 1, end))};
}

} // namespace QN::logviewer
