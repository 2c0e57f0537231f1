#include "framework/async/Signal.h"

#include "platform/base/Mutex.h"

namespace QN::async {

void Signal::set() {
    // Under the mutex to the end: once a waiter gets past it, it may destroy the signal.
    const platform::ScopedLock lock(mutex_);
    count_.store(1, std::memory_order_relaxed);
    if (waiters_ > 0)
        condition_.notifyAll();
}

void Signal::clear() {
    // A signal that is not set needs no clearing. One that is being set at this very moment could
    // as well be set after the clearing; callers that need an order hold a lock over both.
    if (!isSet())
        return;
    const platform::ScopedLock lock(mutex_);
    count_.store(0, std::memory_order_relaxed);
}

void Signal::wait() {
    enter();
    consume();
}

bool Signal::waitFor(std::chrono::nanoseconds bound) {
    const platform::ScopedLock lock(mutex_);
    ++waiters_;
    const auto end = std::chrono::steady_clock::now() + bound;
    while (!isSet() && condition_.waitUntil(mutex_, end)) {
    }
    --waiters_;
    const bool set = isSet();
    if (set)
        count_.store(0, std::memory_order_relaxed);
    return set;
}

void Signal::enter() {
    const platform::ScopedLock lock(mutex_);
    ++waiters_;
}

/// Returns whether other waiters are left.
bool Signal::consume() {
    const platform::ScopedLock lock(mutex_);
    while (!isSet())
        condition_.wait(mutex_);
    --waiters_;
    count_.store(0, std::memory_order_relaxed);
    return waiters_ > 0;
}

} // namespace QN::async
