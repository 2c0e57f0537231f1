#pragma once

#include "framework/logviewer/LogLineScan.h"
#include "framework/logviewer/LogRow.h"

#include <cstdint>
#include <string_view>

namespace QN::logviewer {

/// Finds the messages of a log, whose text comes in parts that may be cut anywhere. It goes on
/// where it stopped and keeps nothing but the state of the unfinished line.
///
/// A message before the first date line, or any other line before the first message, ends the
/// parsing: the file is no log. Once there is a message, nothing does. One thread at a time.
class LogParser {
  public:
    /// The text begins at byte `start` of the file.
    explicit LogParser(std::uint64_t start = 0) noexcept : position_(start), lineStart_(start) {}

    /// For a text that begins with a message, in `hour`.
    LogParser(std::uint64_t start, const LogHour& hour);

    /// Takes the next part of the text, and adds what it holds to the piece.
    void parse(std::string_view part, LogPiece& piece);

    /// Where the next part begins.
    [[nodiscard]] std::uint64_t position() const noexcept { return position_; }

    /// Where the unfinished line begins.
    [[nodiscard]] std::uint64_t lineStart() const noexcept { return lineStart_; }

    [[nodiscard]] bool hasRows() const noexcept { return rows_ > 0; }
    [[nodiscard]] bool hasStopped() const noexcept { return hasStopped_; }

    /// Goes on at byte `start`, with a new line, as if the text up to there had been cut out: with
    /// the hour that it had, and rows counted from 0.
    void restart(std::uint64_t start) noexcept;

  private:
    void endLine(LogPiece& piece);
    void addMessage(const LogLine& line, LogPiece& piece);
    void addFurther(LogPiece& piece) noexcept;

    LogLineScan scan_;
    std::uint64_t position_;
    std::uint64_t lineStart_;
    std::uint64_t rows_ = 0;
    LogHour hour_;
    bool hasHour_ = false;
    bool isHourTold_ = false; // in a piece
    bool hasStopped_ = false;
};

} // namespace QN::logviewer
