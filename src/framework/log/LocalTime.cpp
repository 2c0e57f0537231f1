#include "framework/log/LocalTime.h"

#include <chrono>

namespace QN::log {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::nanoseconds zoneLifetime = 1s;
constexpr std::int64_t secondsPerMinute = 60;

std::int64_t minuteOf(std::int64_t seconds) noexcept {
    return seconds / secondsPerMinute - (seconds % secondsPerMinute < 0 ? 1 : 0);
}

} // namespace

const std::tm& LocalTime::of(std::int64_t secondsSince1970) {
    const std::int64_t minute = minuteOf(secondsSince1970);
    const auto second = static_cast<int>(secondsSince1970 - minute * secondsPerMinute);
    if (!isUpToDate() || !isKnown_ || minute != minute_) {
        const std::time_t wanted = secondsSince1970;
        ::localtime_r(&wanted, &time_);
        minute_ = minute;
        isKnown_ = time_.tm_sec == second; // otherwise a zone of long ago, with odd seconds
        return time_;
    }
    time_.tm_sec = second;
    return time_;
}

/// False when the zone had to be read again, so that time_ may be another zone's.
bool LocalTime::isUpToDate() {
    const auto now = platform::MonotonicClock::now();
    if (zoneRead_ && now - *zoneRead_ < zoneLifetime)
        return true;
    zoneRead_ = now;
    // Reads the environment, which other threads had better not change, and looks whether the file
    // of the zone is another one.
    ::tzset();
    return false;
}

} // namespace QN::log
