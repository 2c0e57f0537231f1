#include "platform/base/WallClock.h"

#include <atomic>
#include <ctime>

namespace platform {

namespace {
std::atomic<WallClock::Source> replacement{nullptr};
}

WallClock::time_point WallClock::now() noexcept {
    if (const Source source = replacement.load(std::memory_order_acquire))
        return source();
    timespec time{};
    ::clock_gettime(CLOCK_REALTIME, &time);
    return time_point(std::chrono::seconds(time.tv_sec) +
                      std::chrono::microseconds(time.tv_nsec / 1000));
}

WallClock::Source WallClock::replaceSource(Source source) noexcept {
    return replacement.exchange(source, std::memory_order_acq_rel);
}

} // namespace platform
