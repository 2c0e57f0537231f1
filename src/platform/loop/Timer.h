#pragma once

#include "platform/base/MonotonicClock.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace platform {

class RunLoop;

/// A one-shot timer, which is also a delayed call that can be cancelled. start() on a pending timer
/// replaces it; if the new time is not earlier, which is the usual case of extending a timeout,
/// that costs O(1) and allocates nothing. The loop's thread only.
class Timer {
  public:
    /// A copy of `action` is called on the loop's thread, after the timer has become inactive, so
    /// it may restart or destroy the timer.
    Timer(RunLoop& loop, std::function<void()> action);
    ~Timer();
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    /// Fires once, `delay` from now. A delay of zero or less fires at the next turn.
    void start(MonotonicClock::duration delay);

    /// Fires once at a point in time; if that has passed, at the next turn.
    void startAt(MonotonicClock::time_point deadline);

    /// Cancels a pending call, if any.
    void stop() noexcept { active_ = false; }

    [[nodiscard]] bool isActive() const noexcept { return active_; }

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
