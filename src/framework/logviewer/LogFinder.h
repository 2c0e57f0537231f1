#pragma once

#include "framework/logviewer/LogBytes.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace QN::logviewer {

/// Finds the lines of a log whose text contains a needle, in upper or lower case; what stands
/// before the text, the time and the level, does not count. It reads the file on a queue of its
/// own, and tells on the main queue. Main thread.
class LogFinder {
  public:
    /// Where lines with the needle begin, in their order, up to `end`, where a line begins.
    using Found = std::function<void(const std::vector<std::uint64_t>& lines, std::uint64_t end)>;

    /// `needle` must not be empty. Does nothing before the first searchTo().
    LogFinder(std::shared_ptr<const LogBytes> file, const QString& needle, Found found);

    /// `found` is not called any more.
    ~LogFinder();
    LogFinder(const LogFinder&) = delete;
    LogFinder& operator=(const LogFinder&) = delete;

    /// Searches from byte `start` on, where a line begins; only the first call says where. Goes on
    /// to byte `end`, which is the end of a complete line.
    void searchTo(std::uint64_t start, std::uint64_t end);

    /// Whether everything up to the last `end` has been searched, and told.
    [[nodiscard]] bool isDone() const noexcept;

  private:
    struct State;
    const std::shared_ptr<State> state_;
};

/// Where a text contains the needle, in the same sense.
struct LogMatch {
    int start;
    int length;
};
[[nodiscard]] std::vector<LogMatch> matchesIn(const QString& text, const QString& needle);

} // namespace QN::logviewer
