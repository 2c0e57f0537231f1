#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace QN::logviewer {

class LogIndex;

/// Which rows of an index are shown: all of them, or those that a filter has let through, in their
/// order. Those that are shown are counted from 0 as places. One thread at a time.
class LogVisibleRows {
  public:
    /// A bit for each level.
    using Levels = std::uint32_t;
    static constexpr Levels allLevels = 0xFFFFFFFFU;

    /// Begins anew: with rows of these levels, and only such as add() brings if `isSelective`.
    void reset(Levels levels, bool isSelective);

    /// Takes the rows of the index that are new, unless the filter is selective.
    void grow(const LogIndex& index);

    /// Lets a row through if its level may be shown. Rows come in their order.
    void add(const LogIndex& index, std::size_t row);

    [[nodiscard]] bool isFiltered() const noexcept { return isSelective_ || levels_ != allLevels; }

    [[nodiscard]] std::size_t count() const noexcept {
        return isFiltered() ? rows_.size() : indexed_;
    }
    [[nodiscard]] std::size_t rowAt(std::size_t place) const noexcept {
        return isFiltered() ? rows_[place] : place;
    }

    /// The place of the row, or of the next row that is shown; count() behind the last one.
    [[nodiscard]] std::size_t placeOf(std::size_t row) const noexcept;

  private:
    Levels levels_ = allLevels;
    bool isSelective_ = false;
    std::size_t indexed_ = 0;
    std::vector<std::uint32_t> rows_; // while it is filtered
};

} // namespace QN::logviewer
