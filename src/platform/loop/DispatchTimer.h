#pragma once

#include "platform/base/MonotonicClock.h"

#include <functional>
#include <memory>

namespace platform {

class DispatchQueue;

/// A one-shot timer that submits a block to a queue. No thread of its own; the clock is
/// MonotonicClock, so suspending the machine neither triggers nor loses it. Any thread.
class DispatchTimer {
  public:
    /// `block` is submitted to `queue` each time that the timer fires.
    DispatchTimer(std::shared_ptr<DispatchQueue> queue, std::function<void()> block);

    /// Cancels. A block that has been submitted already still runs.
    ~DispatchTimer();
    DispatchTimer(const DispatchTimer&) = delete;
    DispatchTimer& operator=(const DispatchTimer&) = delete;

    /// Fires once at `deadline`, replacing an earlier deadline. Throws what backgroundLoop()
    /// throws, and then keeps the former deadline.
    void start(MonotonicClock::time_point deadline);

    /// Does not affect a block that has been submitted already.
    void cancel();

    /// Tests call this after moving a replaced clock, so that all timers check it again.
    static void clockMoved();

  private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace platform
