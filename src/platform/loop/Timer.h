#pragma once

#include "platform/base/MonotonicClock.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace platform {

class RunLoop;

/// A one-shot timer, which is also a delayed call that can be cancelled. start() on a pending timer
/// replaces it; when the new time is not before the old one, which is the usual case of a timeout
/// being pushed back, that costs O(1) and allocates nothing. The loop's thread only.
class Timer {
  public:
    /// A copy of `action` is called on the loop's thread, after the timer has become inactive, so
    /// that it may start it again or destroy it.
    Timer(RunLoop& loop, std::function<void()> action);
    ~Timer();
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    /// Fires once, `delay` from now. A delay of zero or less fires at the next turn.
    void start(MonotonicClock::duration delay);

    /// The same at a point in time; one that has passed is the next turn.
    void startAt(MonotonicClock::time_point deadline);

    /// A pending call is not made; without one nothing happens.
    void stop() noexcept { active_ = false; }

    bool isActive() const noexcept { return active_; }

  private:
    friend class RunLoop;
    static constexpr std::size_t notQueued = static_cast<std::size_t>(-1);

    RunLoop& loop_;
    const std::function<void()> action_;
    MonotonicClock::time_point deadline_;
    std::uint64_t sequence_ = 0;
    std::size_t index_ = notQueued;
    bool active_ = false;
};

} // namespace platform
