#include "platform/loop/Timer.h"

#include "platform/loop/RunLoop.h"

#include <algorithm>

namespace platform {

Timer::Timer(RunLoop& loop, std::function<void()> action)
    : loop_(loop), action_(std::move(action)) {}

Timer::~Timer() {
    loop_.dequeue(*this);
}

void Timer::start(MonotonicClock::duration delay) {
    startAt(MonotonicClock::now() + delay);
}

void Timer::startAt(MonotonicClock::time_point deadline) {
    // Not before now, or a timer that starts itself in the past would stay in front of all others.
    deadline_ = std::max(deadline, MonotonicClock::now());
    active_ = true;
    loop_.enqueue(*this);
}

} // namespace platform
