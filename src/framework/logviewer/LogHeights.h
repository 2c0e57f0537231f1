#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace QN::logviewer {

/// Estimated heights of the rows of a long table, summed in blocks, for its scroll bar. After a
/// change of all heights, or when many rows come at once, blocks keep an older or rougher sum until
/// refresh() comes to them, so that no change takes longer for more rows. One thread at a time.
class LogHeights {
  public:
    /// The height of the rows from `first` up to, but without `last`.
    using Estimate = std::function<std::int64_t(std::size_t first, std::size_t last)>;

    explicit LogHeights(Estimate estimate) : estimate_(std::move(estimate)) {}

    /// There are that many rows now; the others have been added or removed at the end. The last row
    /// from before may have changed.
    void setCount(std::size_t count);

    /// All rows have been replaced.
    void reset(std::size_t count);

    /// All heights have changed.
    void invalidate() noexcept { fresh_ = 0; }

    /// Sums some more blocks. False when there is nothing left to do.
    [[nodiscard]] bool refresh();

    [[nodiscard]] std::int64_t total() const noexcept;
    [[nodiscard]] std::int64_t topOf(std::size_t row) const;

    struct Place {
        std::size_t row;
        std::int64_t offset; ///< below the row's top
    };
    /// The row at that height; the last one behind all. There must be rows.
    [[nodiscard]] Place placeAt(std::int64_t height) const;

  private:
    static constexpr std::size_t blockSize = 1024;
    static constexpr std::size_t blocksAtOnce = 16;

    void sum(std::size_t block);

    const Estimate estimate_;
    std::size_t count_ = 0;
    std::vector<std::int64_t> blocks_;
    std::size_t fresh_ = 0; // blocks before it have been summed since invalidate()
};

} // namespace QN::logviewer
