#include "platform/base/MonotonicClock.h"

#include <atomic>
#include <ctime>

namespace platform {

namespace {
std::atomic<const MonotonicClock::Source*> replacement{nullptr};
}

MonotonicClock::time_point MonotonicClock::now() noexcept {
    if (const Source* source = replacement.load(std::memory_order_acquire))
        return source->now();
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time_point(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
}

const MonotonicClock::Source* MonotonicClock::replaceSource(const Source* source) noexcept {
    return replacement.exchange(source, std::memory_order_acq_rel);
}

} // namespace platform
