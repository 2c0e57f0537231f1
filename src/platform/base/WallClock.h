#pragma once

#include <chrono>

namespace platform {

/// The time of day in UTC, for display and log lines; it jumps when the clock is set. For delays
/// and deadlines use MonotonicClock. Any thread.
class WallClock {
  public:
    using time_point = std::chrono::sys_time<std::chrono::microseconds>;

    static time_point now() noexcept;

    /// The source of the time. Must be callable on any thread.
    using Source = time_point (*)() noexcept;

    /// Replaces the kernel's clock with `source` (null: the kernel's again) and returns the
    /// previous source, null for the kernel's.
    static Source replaceSource(Source source) noexcept;
};

} // namespace platform
