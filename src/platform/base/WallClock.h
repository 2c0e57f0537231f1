#pragma once

#include <chrono>

namespace platform {

/// The time of day in UTC, as people and log lines tell it; it jumps when somebody sets it. For
/// delays and deadlines use MonotonicClock. Any thread.
class WallClock {
  public:
    using time_point = std::chrono::sys_time<std::chrono::microseconds>;

    static time_point now() noexcept;

    /// Where the time comes from. Must be callable on any thread.
    using Source = time_point (*)() noexcept;

    /// Puts `source` in the place of the kernel's clock (null: the kernel's again) and answers what
    /// stood there before, null for the kernel's.
    static Source replaceSource(Source source) noexcept;
};

} // namespace platform
