#include "framework/async/Signal.h"

namespace QN::async {

void Signal::set() {
    // Under the mutex to the end: once a waiter gets past it, it may destroy the signal.
    const std::lock_guard lock(mutex_);
    count_.store(1, std::memory_order_relaxed);
    if (waiters_ > 0)
        condition_.notify_all();
}

void Signal::clear() {
    // A signal that is not set needs no clearing. One that is being set at this very moment could
    // as well be set after the clearing; callers that need an order hold a lock over both.
    if (!isSet())
        return;
    const std::lock_guard lock(mutex_);
    count_.store(0, std::memory_order_relaxed);
}

void Signal::wait() {
    enter();
    consume();
}

bool Signal::waitFor(std::chrono::nanoseconds bound) {
    std::unique_lock lock(mutex_);
    ++waiters_;
    const bool set = condition_.wait_for(lock, bound, [this] { return isSet(); });
    --waiters_;
    if (set)
        count_.store(0, std::memory_order_relaxed);
    return set;
}

void Signal::enter() {
    const std::lock_guard lock(mutex_);
    ++waiters_;
}

/// Returns whether other waiters are left.
bool Signal::consume() {
    std::unique_lock lock(mutex_);
    condition_.wait(lock, [this] { return isSet(); });
    --waiters_;
    count_.store(0, std::memory_order_relaxed);
    return waiters_ > 0;
}

} // namespace QN::async
