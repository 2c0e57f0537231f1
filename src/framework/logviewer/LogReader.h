#pragma once

#include "framework/logviewer/LogBytes.h"
#include "framework/logviewer/LogRow.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace QN::logviewer {

/// What has happened to a file since it was opened.
enum class LogFileState : std::uint8_t {
    present,
    moved,   ///< its path refers to another file, or to none
    deleted, ///< and no other name is left
};

/// What the reader has found.
struct LogDelivery {
    enum class Kind : std::uint8_t {
        part, ///< what follows what has been delivered
        tail, ///< the last messages of the file, before the parts in which they come again
        cut,  ///< forget everything: the file has been truncated or overwritten
    };

    Kind kind = Kind::part;
    LogPiece piece = {};
    bool isCaughtUp = false; ///< the end of the file has been reached
    LogFileState state = LogFileState::present;
};

/// Reads a log file from its beginning to its end, and then what is added to it. It reads and
/// parses on a queue of its own, and delivers on the main queue, with at most one call waiting.
///
/// A byte-order mark is no part of the first line. When the file has been cut, reading begins anew;
/// zero bytes at its beginning then, which are what a program leaves that goes on writing where it
/// was, are no part of the first line either, and the hour is the one from before. Main thread.
class LogReader {
  public:
    using Handler = std::function<void(std::vector<LogDelivery> deliveries)>;

    /// Null, with errno set, if the file cannot be read.
    [[nodiscard]] static std::unique_ptr<LogReader> start(const std::string& path, Handler handler);

    /// The handler is not called any more.
    ~LogReader();
    LogReader(const LogReader&) = delete;
    LogReader& operator=(const LogReader&) = delete;

    [[nodiscard]] const std::shared_ptr<const LogBytes>& file() const noexcept { return file_; }

  private:
    class Worker;

    LogReader(std::shared_ptr<const LogBytes> file, std::shared_ptr<Worker> worker);

    const std::shared_ptr<const LogBytes> file_;
    const std::shared_ptr<Worker> worker_;
};

} // namespace QN::logviewer
