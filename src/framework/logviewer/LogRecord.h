#pragma once

#include "framework/logviewer/LogLineScan.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace QN::logviewer {

/// A message of a log, read from the file.
struct LogRecord {
    std::int64_t time = 0; ///< seconds, see LogHour::base()
    std::uint32_t milliseconds = 0;
    std::uint32_t level = 0;
    std::string text;
    std::uint32_t minute = 0;
    std::uint32_t second = 0;
};

/// Reads the message that `bytes` begins with, in the hour `hour`. They end before the next message
/// or where the reader wants to cut it; what the message does not own (date lines, lines that are
/// not UTF-8 or have no time) is left out of the text. Bytes that do not begin with a message, as
/// when the file has been overwritten, make an empty record. Any thread.
[[nodiscard]] LogRecord readRecord(std::string_view bytes, const LogHour& hour);

} // namespace QN::logviewer
