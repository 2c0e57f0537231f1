#include "framework/logviewer/LogIndex.h"

#include <algorithm>
#include <iterator>

namespace QN::logviewer {

void LogIndex::append(const LogPiece& piece) {
    if (piece.furtherLines > 0 && size_ > 0)
        last().addLines(piece.furtherLines);
    for (const LogRow& row : piece.rows) {
        if (size_ % blockSize == 0)
            blocks_.push_back(std::make_unique<Block>());
        ++size_;
        last() = row;
    }
    hours_.insert(hours_.end(), piece.hours.begin(), piece.hours.end());
    end_ = piece.end;
    droppedLines_ += piece.droppedLines;
    hasStopped_ = piece.hasStopped;
}

const LogHour& LogIndex::hourOf(std::size_t row) const noexcept {
    const auto next = std::ranges::upper_bound(hours_, row, {}, &LogHourStart::row);
    return std::prev(next)->hour; // the first row has one
}

std::size_t LogIndex::rowsBefore(std::uint64_t offset) const noexcept {
    std::size_t first = 0;
    for (std::size_t count = size_; count > 0;) {
        const std::size_t half = count / 2;
        if ((*this)[first + half].start() < offset) {
            first += half + 1;
            count -= half + 1;
        } else {
            count = half;
        }
    }
    return first;
}

std::size_t LogIndex::rowAt(std::uint64_t offset) const noexcept {
    const std::size_t before = rowsBefore(offset + 1);
    return before == 0 ? size_ : before - 1;
}

} // namespace QN::logviewer
