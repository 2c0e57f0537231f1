#include "support/ManualClock.h"

namespace support {

namespace {
using platform::MonotonicClock;
constexpr MonotonicClock::duration start = std::chrono::hours(5);
} // namespace

ManualClock::ManualClock()
    : ticks_(start.count()), previous_(MonotonicClock::replaceSource(this)) {}

ManualClock::~ManualClock() {
    MonotonicClock::replaceSource(previous_);
}

MonotonicClock::time_point ManualClock::now() const noexcept {
    return MonotonicClock::time_point(MonotonicClock::duration(ticks_.load()));
}

void ManualClock::advance(MonotonicClock::duration step) noexcept {
    ticks_.fetch_add(step.count());
}

} // namespace support
