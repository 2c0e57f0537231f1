#pragma once

#include "framework/logviewer/LogLineScan.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace QN::logviewer {

/// Where in the file a message begins, its level and its number of lines, in 8 bytes. The message
/// ends where the next one begins; what that range holds besides is told by LogRecord.
class LogRow {
  public:
    /// A file may be that long.
    static constexpr std::uint64_t mostBytes = (std::uint64_t{1} << 44U) - 1;
    /// More lines count as that many.
    static constexpr std::uint32_t mostLines = (1U << 15U) - 1;

    LogRow() = default;
    LogRow(std::uint64_t start, std::uint32_t level) noexcept
        : bits_(start << startShift | std::uint64_t{level & levelMask} << levelShift | 1U) {}

    [[nodiscard]] std::uint64_t start() const noexcept { return bits_ >> startShift; }
    [[nodiscard]] std::uint32_t level() const noexcept {
        return static_cast<std::uint32_t>(bits_ >> levelShift) & levelMask;
    }
    [[nodiscard]] std::uint32_t lines() const noexcept {
        return static_cast<std::uint32_t>(bits_) & mostLines;
    }

    void addLines(std::uint64_t count) noexcept {
        bits_ += std::min<std::uint64_t>(count, mostLines - lines());
    }

  private:
    static constexpr unsigned startShift = 20;
    static constexpr unsigned levelShift = 15;
    static constexpr std::uint32_t levelMask = 31;

    std::uint64_t bits_ = 0;
};

/// The hour from a row on.
struct LogHourStart {
    std::uint64_t row = 0; ///< of all rows of the file, from 0
    LogHour hour;
};

/// What a part of a file holds.
struct LogPiece {
    std::uint64_t furtherLines = 0; ///< of the last message before the part
    std::vector<LogRow> rows;
    std::vector<LogHourStart> hours;
    std::uint64_t end = 0;          ///< of its last complete line
    std::uint64_t droppedLines = 0; ///< that are not UTF-8
    bool hasStopped = false;        ///< there will be no more: the file is no log
};

} // namespace QN::logviewer
