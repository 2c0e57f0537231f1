#pragma once

#include <chrono>

namespace platform {

/// The one clock that every delay, timer and rate limit of the program reads. It never goes
/// backwards and stands still while the machine is suspended (CLOCK_MONOTONIC). Tests put a source
/// of their own in its place, so that no test has to wait for real time to pass.
///
/// Satisfies the standard's TrivialClock requirements. All operations may be called on any thread.
class MonotonicClock {
  public:
    using duration = std::chrono::nanoseconds;
    using rep = duration::rep;
    using period = duration::period;
    using time_point = std::chrono::time_point<MonotonicClock>;
    static constexpr bool is_steady = true;

    static time_point now() noexcept;

    /// Where the time comes from. Must be callable on any thread.
    class Source {
      public:
        virtual ~Source() = default;
        virtual time_point now() const noexcept = 0;
    };

    /// Puts `source` in the place of the kernel's clock, or the kernel's clock back when it is
    /// null, and answers what stood there before. The source must outlive its use.
    static const Source* replaceSource(const Source* source) noexcept;
};

} // namespace platform
