#include "support/ManualClock.h"

#include "platform/loop/DispatchTimer.h"

#include <atomic>

namespace support {

namespace {

using platform::MonotonicClock;

constexpr MonotonicClock::duration ahead = std::chrono::hours(5);

/// Lives as long as the program: another thread may be reading the clock while it is put back.
class ManualSource : public MonotonicClock::Source {
  public:
    MonotonicClock::time_point now() const noexcept override {
        return MonotonicClock::time_point(MonotonicClock::duration(ticks.load()));
    }

    std::atomic<MonotonicClock::rep> ticks{0};
};

ManualSource source;

} // namespace

ManualClock::ManualClock() {
    source.ticks = (MonotonicClock::now().time_since_epoch() + ahead).count();
    previous_ = MonotonicClock::replaceSource(&source);
}

ManualClock::~ManualClock() {
    MonotonicClock::replaceSource(previous_);
}

MonotonicClock::time_point ManualClock::now() const noexcept {
    return source.now();
}

void ManualClock::advance(MonotonicClock::duration step) noexcept {
    source.ticks += step.count();
    platform::DispatchTimer::clockMoved();
}

} // namespace support
