#pragma once

#include "framework/log/LocalTime.h"

#include "platform/base/WallClock.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace QN::log {

/// Formats the lines of a log file, as described in qnlog.h. One thread at a time.
class LineComposer {
  public:
    /// The line of a message with a line feed at its end, and with a date line before it if hour,
    /// day, month or zone differ from those of the last written line. The text must not be empty.
    /// Valid until the next call. Throws std::bad_alloc.
    std::string_view compose(std::uint32_t level, platform::WallClock::time_point time,
                             std::string_view text);

    /// Call this when the last line has been written, so that its date line is not repeated.
    void confirm() noexcept { lastHourKey_ = composedKey_; }

  private:
    void appendDateLine(const std::tm& local);
    void appendHead(const std::tm& local, std::chrono::microseconds fraction, std::uint32_t level);
    void appendText(std::string_view text);

    LocalTime localTime_;
    std::int64_t lastHourKey_ = -1;
    std::int64_t composedKey_ = -1;
    std::string line_;
};

} // namespace QN::log
