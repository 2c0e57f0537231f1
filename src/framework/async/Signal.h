#pragma once

#include "platform/base/Mutex.h"

#include <atomic>
#include <chrono>
#include <cstdint>

namespace QN::async {

/// A signal that stays set until one waiter consumes it. Any thread.
class Signal {
  public:
    /// Wakes all waiters; one of them consumes the signal, the others go on waiting.
    void set();

    void clear();

    /// Blocks until the signal is set and consumes it.
    void wait();

    /// The same for no longer than `bound`; false when it was not set in that time.
    bool waitFor(std::chrono::nanoseconds bound);

    /// Calls `request`, which must lead to the signal, and waits for it. One signal satisfies any
    /// number of requests, but only one waiter consumes it: if others remain, it is requested
    /// again, so that every waiter gets one. `request` must not throw.
    template <typename Request>
    void request(const Request& request) {
        enter();
        request();
        if (consume())
            request();
    }

  private:
    bool isSet() const noexcept { return count_.load(std::memory_order_relaxed) >= 1; }
    void enter();
    bool consume();

    platform::Mutex mutex_;
    platform::Condition condition_;
    std::atomic<std::int32_t> count_{0}; // written under mutex_
    std::int32_t waiters_ GUARDED_BY(mutex_) = 0;
};

} // namespace QN::async
