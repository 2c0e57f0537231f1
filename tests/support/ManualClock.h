#pragma once

#include "platform/base/MonotonicClock.h"

namespace support {

/// The program's clock while it lives: stops until a test moves it. Starts ahead of the real clock,
/// so that time never goes back at its start, and well after zero, so that a time taken for "never"
/// shows. One at a time; any thread may read or move it.
///
/// Moving it wakes dispatch timers, but no run loop; call the loop's turn(), which then serves what
/// is due.
class ManualClock {
  public:
    ManualClock();
    ~ManualClock();
    ManualClock(const ManualClock&) = delete;
    ManualClock& operator=(const ManualClock&) = delete;

    platform::MonotonicClock::time_point now() const noexcept;
    void advance(platform::MonotonicClock::duration step) noexcept;

  private:
    const platform::MonotonicClock::Source* previous_;
};

} // namespace support
