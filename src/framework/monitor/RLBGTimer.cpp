#include "framework/monitor/RLBGTimer.h"

#include "platform/base/MonotonicClock.h"
#include "platform/loop/DispatchTimer.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <utility>

using platform::MonotonicClock;

namespace {

using Seconds = std::chrono::duration<double>;

/// About thirty years, which the clock can hold.
constexpr Seconds longestDelay{1e9};

} // namespace

/// A run that has been submitted to the queue may find the timer gone, so it shares this.
struct RLBGTimer::State : std::enable_shared_from_this<State> {
    State(void* object, std::uint32_t behaviorToShow, std::string label)
        : obj_(object)
        , behavior_(behaviorToShow)
        , queue_(platform::DispatchQueue::makeSerial(std::move(label))) {}

    static MonotonicClock::time_point _now() noexcept { return MonotonicClock::now(); }

    bool mayReschedule(MonotonicClock::time_point fireTime) const noexcept {
        if (behavior_ == RLBGTimerCoalesce)
            return nextFireTime_ > fireTime;
        return behavior_ == RLBGTimerDelay;
    }

    void request(Seconds delay, MonotonicClock::time_point asked, Block& block) {
        const auto now = _now();
        const Seconds left = std::max(Seconds::zero(), delay - Seconds(now - asked));
        const auto fireTime =
            now + std::chrono::round<MonotonicClock::duration>(std::min(left, longestDelay));
        if (timer_ && !mayReschedule(fireTime))
            return;
        start(fireTime);
        nextFireTime_ = fireTime;
        std::swap(block_, block);
    }

    void start(MonotonicClock::time_point fireTime) {
        const bool isPending = timer_.has_value();
        if (!isPending) {
            timer_.emplace(queue_, [weak = weak_from_this()] {
                if (const auto self = weak.lock())
                    self->fire();
            });
        }
        try {
            timer_->start(fireTime);
        } catch (...) {
            if (!isPending)
                timer_.reset();
            throw;
        }
    }

    void fire() {
        // Submitted for a deadline that has been dropped or pushed back while it waited its turn.
        if (!timer_ || nextFireTime_ > _now())
            return;
        const Block block = std::exchange(block_, nullptr);
        _cancel();
        block(obj_);
    }

    void _cancel() {
        timer_.reset();
        block_ = nullptr;
    }

    std::atomic<void*> obj_;
    const std::uint32_t behavior_;
    const std::shared_ptr<platform::DispatchQueue> queue_;

    // On the queue only.
    std::optional<platform::DispatchTimer> timer_; // present: a run is pending
    MonotonicClock::time_point nextFireTime_;
    Block block_;
};

RLBGTimer::RLBGTimer(void* object) : RLBGTimer(object, RLBGTimerCoalesce, defaultLabel) {}

RLBGTimer::RLBGTimer(void* object, std::uint32_t behavior, std::string queueLabel)
    : state_(std::make_shared<State>(object, behavior, std::move(queueLabel))) {}

RLBGTimer::~RLBGTimer() {
    cancel();
}

void RLBGTimer::afterDelay(double delay, Block block) {
    const auto asked = State::_now();
    const auto request = [&] { state_->request(Seconds(delay), asked, block); };
    performWhileLocked(std::ref(request));
}

void RLBGTimer::cancel() {
    performWhileLocked([this] { state_->_cancel(); });
}

void RLBGTimer::setTargetQueue(std::shared_ptr<platform::DispatchQueue> queue) {
    state_->queue_->setTarget(std::move(queue));
}

void RLBGTimer::performWhileLocked(const std::function<void()>& block) {
    state_->queue_->sync(block);
}

void* RLBGTimer::obj() const noexcept {
    return state_->obj_;
}

void RLBGTimer::setObj(void* object) noexcept {
    state_->obj_ = object;
}

const std::shared_ptr<platform::DispatchQueue>& RLBGTimer::queue() const noexcept {
    return state_->queue_;
}
