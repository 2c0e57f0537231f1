#pragma once

#include "platform/base/MonotonicClock.h"

#include <cstdint>
#include <ctime>
#include <optional>

namespace QN::log {

/// Converts points in time into local date and time without calling the C library each time, which
/// takes a lock and may read the zone file: within a minute only the second differs, since zones
/// change their offset on whole minutes. A change of the TZ variable or of the system's zone is
/// noticed within a second. One thread at a time.
class LocalTime {
  public:
    /// Like localtime_r(3), with the offset from UTC in tm_gmtoff. The reference is valid until the
    /// next call.
    const std::tm& of(std::int64_t secondsSince1970);

  private:
    bool isUpToDate();

    std::tm time_{};
    std::int64_t minute_ = 0; // that time_ stands for
    bool isKnown_ = false;    // time_ and minute_ are valid

    std::optional<platform::MonotonicClock::time_point> zoneRead_;
};

} // namespace QN::log
