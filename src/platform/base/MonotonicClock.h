#pragma once

#include <chrono>

namespace platform {

/// The one clock that every delay, timer and rate limit of the program reads. It never goes
/// backwards and stops while the machine is suspended (CLOCK_MONOTONIC). Tests replace its source,
/// so that no test has to wait for real time.
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

    /// The source of the time. Must be callable on any thread.
    class Source {
      public:
        virtual ~Source() = default;
        [[nodiscard]] virtual time_point now() const noexcept = 0;
    };

    /// Replaces the kernel's clock with `source` (null: the kernel's clock again) and returns the
    /// previous source. The source must outlive its use.
    static const Source* replaceSource(const Source* source) noexcept;
};

} // namespace platform
