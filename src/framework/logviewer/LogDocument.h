#pragma once

#include "framework/logviewer/LogBytes.h"
#include "framework/logviewer/LogIndex.h"
#include "framework/logviewer/LogReader.h"
#include "framework/logviewer/QNLogEntry.h"

#include <QString>

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace QN::logviewer {

/// An open log as far as it has been read: its rows, whose texts are read from the file when they
/// are asked for. While a long file is being read, the rows are only those at its end. Main thread.
class LogDocument {
  public:
    /// How rows have changed besides those that have been added at the end.
    struct Change {
        bool isReset = false;       ///< no row from before is left
        std::size_t rowsBefore = 0; ///< so many rows have come before the first one
        bool hasGrown = false;      ///< rows, or lines of the last row, may have been added
    };

    /// Begins anew; null: without a file.
    void open(std::shared_ptr<const LogBytes> file);

    Change take(std::vector<LogDelivery> deliveries);

    [[nodiscard]] const std::shared_ptr<const LogBytes>& file() const noexcept { return file_; }
    [[nodiscard]] const LogIndex& index() const noexcept { return tail_ ? *tail_ : index_; }
    [[nodiscard]] LogFileState state() const noexcept { return state_; }
    [[nodiscard]] bool hasBeenCut() const noexcept { return hasBeenCut_; }

    /// Whether all that the file had has been read.
    [[nodiscard]] bool isCaughtUp() const noexcept { return isCaughtUp_; }

    /// The row's message; a very long one is cut.
    [[nodiscard]] QNLogEntry entry(std::size_t row) const;

    /// How many bytes the row has in the file.
    [[nodiscard]] std::size_t sizeOf(std::size_t row) const noexcept;

    /// How many of them are shown.
    [[nodiscard]] std::size_t shownSize(std::size_t row) const noexcept;

    /// The whole message with its date, time and level, and a line feed.
    [[nodiscard]] QString copyText(std::size_t row) const;

    /// The first row that is not before that time of the file, by its hours and minutes; the rows
    /// within an hour are taken to be in order. Nothing when there is none.
    struct Moment {
        std::optional<LogHour> day; ///< year, month and day; without: the day of `from`
        std::uint32_t secondOfDay = 0;
    };
    [[nodiscard]] std::optional<std::size_t> rowAtTime(const Moment& moment,
                                                       std::size_t from) const;

  private:
    LogRecord record(std::size_t row, std::size_t mostBytes) const;
    void takeOne(LogDelivery& delivery, Change& change);
    void replaceTail(Change& change);

    std::shared_ptr<const LogBytes> file_;
    LogIndex index_;
    std::unique_ptr<LogIndex> tail_; // while the file is being read
    LogFileState state_ = LogFileState::present;
    bool hasBeenCut_ = false;
    bool isCaughtUp_ = false;
};

} // namespace QN::logviewer
