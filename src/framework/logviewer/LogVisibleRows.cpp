#include "framework/logviewer/LogVisibleRows.h"

#include "framework/logviewer/LogIndex.h"

#include <algorithm>

namespace QN::logviewer {

void LogVisibleRows::reset(Levels levels, bool isSelective) {
    levels_ = levels;
    isSelective_ = isSelective;
    indexed_ = 0;
    rows_.clear();
    rows_.shrink_to_fit();
}

void LogVisibleRows::grow(const LogIndex& index) {
    for (; isFiltered() && !isSelective_ && indexed_ < index.size(); ++indexed_)
        add(index, indexed_);
    indexed_ = index.size();
}

void LogVisibleRows::add(const LogIndex& index, std::size_t row) {
    if ((levels_ >> index[row].level() & 1U) != 0 && (rows_.empty() || rows_.back() < row))
        rows_.push_back(static_cast<std::uint32_t>(row));
}

std::size_t LogVisibleRows::placeOf(std::size_t row) const noexcept {
    if (!isFiltered())
        return std::min(row, count());
    return static_cast<std::size_t>(std::ranges::lower_bound(rows_, row) - rows_.begin());
}

} // namespace QN::logviewer
