#pragma once

#include "framework/logviewer/LogRecord.h"

#include <QDateTime>
#include <QString>

#include <cstdint>

/// One row of the log: a message with its time and level. Its text is decoded when it is asked for.
/// Main thread.
class QNLogEntry {
  public:
    QNLogEntry() = default;

    /// `leftOut` is how many bytes of the message the record does not have.
    explicit QNLogEntry(QN::logviewer::LogRecord record, std::uint64_t leftOut = 0);

    /// The time of day is that of the file in any zone; see QN::logviewer::LogHour about the day.
    /// Without milliseconds.
    QDateTime date() const;

    /// 0 to 16; see qnlog.h.
    std::uint32_t level() const noexcept { return record_.level; }

    /// In the language of the log, but for a last line about bytes that have been left out.
    QString message() const;

    /// The height of its row, in pixels, at the width of the column; 0 when not measured.
    double cellHeight = 0;
    double columnWidth = 0;

  private:
    QN::logviewer::LogRecord record_;
    std::uint64_t leftOut_ = 0;
};

/// The name of a level for people: "Error". Empty for a level that has none.
QString nameOfLogLevel(std::uint32_t level);
