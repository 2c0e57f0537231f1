#pragma once

#include "framework/logviewer/LogBytes.h"
#include "framework/logviewer/LogRow.h"

#include <cstdint>
#include <optional>

namespace QN::logviewer {

/// The last messages of a log, found without reading what is before them: once a log has a message,
/// a message line is one wherever it is, and its hour is that of the last date line before it. A
/// date line of more than a few hundred bytes is not found. `start` is behind the first message.
///
/// The piece counts rows from its own first one. Nothing when there is no message in the last MiBs,
/// or no date line. Any thread.
[[nodiscard]] std::optional<LogPiece> readTail(const LogBytes& file, std::uint64_t start,
                                               std::uint64_t end);

} // namespace QN::logviewer
