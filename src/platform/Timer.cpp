#include "platform/Timer.h"

#include "platform/RunLoop.h"

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
    deadline_ = deadline;
    active_ = true;
    loop_.enqueue(*this);
}

} // namespace platform
