#pragma once

#include "framework/log/LocalTime.h"

#include "platform/base/WallClock.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace QN::log {

/// Makes the lines of a log file; qnlog.h tells how they look. One thread at a time.
class LineComposer {
  public:
    /// The line of a message, with the date line before it when its hour, day, month or zone is not
    /// that of the last line that was written, and with the line feed at its end. The text is not
    /// empty. Good until the next call. Throws std::bad_alloc.
    std::string_view compose(std::uint32_t level, platform::WallClock::time_point time,
                             std::string_view text);

    /// To be called when the last line has been written: its date line is not owed any more.
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
