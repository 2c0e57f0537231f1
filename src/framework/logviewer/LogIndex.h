#pragma once

#include "framework/logviewer/LogRow.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace QN::logviewer {

/// Where the messages of a file are. Rows are counted from 0. It grows without moving what it has.
/// One thread at a time.
class LogIndex {
  public:
    /// Adds what follows in the file.
    void append(const LogPiece& piece);

    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    [[nodiscard]] const LogRow& operator[](std::size_t row) const noexcept {
        return (*blocks_[row / blockSize])[row % blockSize];
    }

    /// Where the message of a row ends in the file.
    [[nodiscard]] std::uint64_t endOf(std::size_t row) const noexcept {
        return row + 1 < size_ ? (*this)[row + 1].start() : end_;
    }

    /// The end of the last complete line.
    [[nodiscard]] std::uint64_t end() const noexcept { return end_; }

    /// The hour of a row.
    [[nodiscard]] const LogHour& hourOf(std::size_t row) const noexcept;

    /// All hours, in the order of the file.
    [[nodiscard]] const std::vector<LogHourStart>& hours() const noexcept { return hours_; }

    /// The row that the byte belongs to; size() when it is before the first one.
    [[nodiscard]] std::size_t rowAt(std::uint64_t offset) const noexcept;

    /// How many rows begin before the byte.
    [[nodiscard]] std::size_t rowsBefore(std::uint64_t offset) const noexcept;

    /// Lines that are not UTF-8.
    [[nodiscard]] std::uint64_t droppedLines() const noexcept { return droppedLines_; }

    [[nodiscard]] bool hasStopped() const noexcept { return hasStopped_; }

  private:
    static constexpr std::size_t blockSize = 4096;
    using Block = std::array<LogRow, blockSize>;

    LogRow& last() noexcept { return (*blocks_.back())[(size_ - 1) % blockSize]; }

    std::vector<std::unique_ptr<Block>> blocks_;
    std::size_t size_ = 0;
    std::vector<LogHourStart> hours_;
    std::uint64_t end_ = 0;
    std::uint64_t droppedLines_ = 0;
    bool hasStopped_ = false;
};

} // namespace QN::logviewer
