#include "platform/loop/SerialDispatchQueue.h"

#include "platform/base/ExceptionReport.h"
#include "platform/base/Mutex.h"

#include <exception>
#include <utility>

namespace platform {

namespace {

/// Blocks that one job runs before the target's other work gets its turn.
constexpr std::size_t blocksPerJob = 16;

} // namespace

SerialDispatchQueue::SerialDispatchQueue(std::string label, std::shared_ptr<DispatchQueue> target)
    : DispatchQueue(std::move(label)), target_(std::move(target)) {}

std::shared_ptr<DispatchQueue> SerialDispatchQueue::target() const {
    const ScopedLock lock(mutex_);
    return target_;
}

void SerialDispatchQueue::async(Block block) {
    const ScopedLock lock(mutex_);
    blocks_.push_back(std::move(block));
    scheduleIfNeeded();
}

void SerialDispatchQueue::setTarget(std::shared_ptr<DispatchQueue> target) {
    if (target == nullptr)
        target = global();
    const ScopedLock lock(mutex_);
    if (target_ == target)
        return;
    target_ = std::move(target);
    // A job that waits in the former target will find that it is at the wrong place.
    scheduled_ = false;
    changed_.notifyAll();
    scheduleIfNeeded();
}

void SerialDispatchQueue::scheduleIfNeeded() {
    if (blocks_.empty() || scheduled_ || executing_)
        return;
    scheduled_ = true;
    const auto on = target_;
    const ScopedUnlock unlocked(mutex_);
    // The job keeps the queue alive until its blocks have run.
    on->async([this, self = shared_from_this(), on] { runJob(on); });
}

void SerialDispatchQueue::runJob(const std::shared_ptr<DispatchQueue>& on) {
    const ScopedLock lock(mutex_);
    if (target_ != on)
        return; // the new target has a job of its own
    scheduled_ = false;
    if (executing_)
        return; // by sync() elsewhere, which schedules anew when it has finished
    executing_ = true;
    for (std::size_t left = blocksPerJob; left > 0 && !blocks_.empty() && target_ == on; --left)
        runOldest();
    finish();
}

void SerialDispatchQueue::runOldest() {
    const Running running(*this);
    Block block = std::move(blocks_.front());
    blocks_.pop_front();
    const ScopedUnlock unlocked(mutex_);
    guarded(kExceptionInDispatchQueue, block);
    block = nullptr; // its captures are released without the lock
}

void SerialDispatchQueue::finish() {
    executing_ = false;
    changed_.notifyAll();
    scheduleIfNeeded();
}

bool SerialDispatchQueue::isHeldByCaller() const noexcept {
    return isCurrent() || target()->isHeldByCaller();
}

/// A block whose submitter waits until it has run.
struct SerialDispatchQueue::Waiter {
    const Block& block;
    bool isQueued = false;
    // Guarded by the queue's mutex_.
    bool isDone = false;
    std::exception_ptr thrown = {};
};

/// Looks at everything anew whenever the target has changed, which may have become one that the
/// caller holds.
void SerialDispatchQueue::syncFromOutside(const Block& block) {
    Waiter waiter{block};
    {
        const ScopedLock lock(mutex_);
        while (!waiter.isDone)
            advance(waiter);
    }
    if (waiter.thrown)
        std::rethrow_exception(waiter.thrown);
}

void SerialDispatchQueue::advance(Waiter& waiter) {
    const auto on = target_;
    if (!isHeld(*on) && (executing_ || !blocks_.empty())) {
        waitFor(waiter, on);
        return;
    }
    while (executing_ && !waiter.isDone && target_ == on)
        changed_.wait(mutex_);
    if (executing_ || waiter.isDone || target_ != on)
        return;
    const ScopedUnlock unlocked(mutex_);
    runHere(*on, waiter);
}

/// Whether the caller holds the queue `on`: a job that waits in it could not run before we return.
bool SerialDispatchQueue::isHeld(DispatchQueue& on) {
    const ScopedUnlock unlocked(mutex_);
    return on.isCurrent() || on.isHeldByCaller();
}

/// Until the block has run in its turn, or the queue has another target than `on`.
void SerialDispatchQueue::waitFor(Waiter& waiter, const std::shared_ptr<DispatchQueue>& on) {
    if (!std::exchange(waiter.isQueued, true))
        blocks_.emplace_back([&] { run(waiter); });
    scheduleIfNeeded();
    while (!waiter.isDone && target_ == on)
        changed_.wait(mutex_);
}

/// Runs what waits and then the block on the calling thread, in a turn of the target. The queue is
/// taken only when that turn has come: whoever holds the target may need the queue until then. The
/// block is not done afterwards when somebody else has the queue or it has got another target.
void SerialDispatchQueue::runHere(DispatchQueue& on, Waiter& waiter) {
    on.sync([&] {
        const ScopedLock lock(mutex_);
        if (executing_ || waiter.isDone)
            return;
        executing_ = true;
        std::size_t left = blocks_.size();
        for (; left > 0 && !waiter.isDone && target_.get() == &on; --left)
            runOldest();
        if (!waiter.isDone && target_.get() == &on && !waiter.isQueued) {
            const ScopedUnlock unlocked(mutex_);
            const Running running(*this);
            run(waiter);
        }
        finish();
    });
}

void SerialDispatchQueue::run(Waiter& waiter) {
    std::exception_ptr thrown;
    try {
        waiter.block();
    } catch (...) {
        thrown = std::current_exception();
    }
    const ScopedLock lock(mutex_);
    waiter.thrown = thrown;
    waiter.isDone = true;
    changed_.notifyAll();
}

} // namespace platform
