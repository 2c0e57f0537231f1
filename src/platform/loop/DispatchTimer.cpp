#include "platform/loop/DispatchTimer.h"

#include "platform/base/Mutex.h"
#include "platform/loop/BackgroundLoop.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/Timer.h"

#include <atomic>
#include <optional>

namespace platform {

namespace {

// Whether there is anything that a moved clock could make due.
std::atomic<bool> anyStarted{false};

} // namespace

/// A timer of the background loop is asked to wake us no later than the deadline. Pushing the
/// deadline back only notes the new one: the early wake-up then waits on.
struct DispatchTimer::State : std::enable_shared_from_this<State> {
    State(std::shared_ptr<DispatchQueue> queueToUse, std::function<void()> blockToRun)
        : queue(std::move(queueToUse))
        , block(std::make_shared<const std::function<void()>>(std::move(blockToRun))) {}

    void wakeAt(MonotonicClock::time_point time) REQUIRES(mutex) {
        backgroundLoop().post([this, self = shared_from_this(), time] {
            if (!timer)
                timer.emplace(backgroundLoop(), [this] { woken(); });
            timer->startAt(time);
        });
        wakeUp = time;
        started = true;
    }

    /// Otherwise there may be no background loop, and there is nothing to release.
    bool everStarted() {
        const ScopedLock lock(mutex);
        return started;
    }

    void woken() {
        const ScopedLock lock(mutex);
        wakeUp.reset();
        if (!deadline)
            return;
        if (*deadline > MonotonicClock::now()) {
            wakeUp = deadline;
            timer->startAt(*deadline);
            return;
        }
        deadline.reset();
        queue->async([work = block] { (*work)(); });
    }

    const std::shared_ptr<DispatchQueue> queue;
    const std::shared_ptr<const std::function<void()>> block;

    Mutex mutex;
    std::optional<MonotonicClock::time_point> deadline GUARDED_BY(mutex);
    std::optional<MonotonicClock::time_point> wakeUp GUARDED_BY(mutex);
    bool started GUARDED_BY(mutex) = false;

    std::optional<Timer> timer; // the background loop's thread only
};

DispatchTimer::DispatchTimer(std::shared_ptr<DispatchQueue> queue, std::function<void()> block)
    : state_(std::make_shared<State>(std::move(queue), std::move(block))) {}

DispatchTimer::~DispatchTimer() {
    cancel();
    if (!state_->everStarted())
        return;
    // The loop's thread lets go of its timer.
    backgroundLoop().post([state = std::move(state_)] { state->timer.reset(); });
}

void DispatchTimer::start(MonotonicClock::time_point deadline) {
    const ScopedLock lock(state_->mutex);
    if (!state_->wakeUp || deadline < *state_->wakeUp)
        state_->wakeAt(deadline);
    state_->deadline = deadline;
    anyStarted = true;
}

void DispatchTimer::cancel() {
    const ScopedLock lock(state_->mutex);
    state_->deadline.reset();
}

void DispatchTimer::clockMoved() {
    if (anyStarted)
        backgroundLoop().post([] {});
}

} // namespace platform
