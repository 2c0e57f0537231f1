#include "platform/loop/SerialDispatchQueue.h"

#include "platform/base/ExceptionReport.h"

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
    const std::lock_guard lock(mutex_);
    return target_;
}

void SerialDispatchQueue::async(Block block) {
    Lock lock(mutex_);
    blocks_.push_back(std::move(block));
    scheduleIfNeeded(lock);
}

void SerialDispatchQueue::setTarget(std::shared_ptr<DispatchQueue> target) {
    if (target == nullptr)
        target = global();
    Lock lock(mutex_);
    if (target_ == target)
        return;
    target_ = std::move(target);
    // A job that waits in the former target will find that it is at the wrong place.
    scheduled_ = false;
    changed_.notify_all();
    scheduleIfNeeded(lock);
}

void SerialDispatchQueue::scheduleIfNeeded(Lock& lock) {
    if (blocks_.empty() || scheduled_ || executing_)
        return;
    scheduled_ = true;
    const auto on = target_;
    lock.unlock();
    // The job keeps the queue alive until its blocks have run.
    on->async([this, self = shared_from_this(), on] { runJob(on); });
    lock.lock();
}

void SerialDispatchQueue::runJob(const std::shared_ptr<DispatchQueue>& on) {
    Lock lock(mutex_);
    if (target_ != on)
        return; // the new target has a job of its own
    scheduled_ = false;
    if (executing_)
        return; // by sync() elsewhere, which schedules anew when it has finished
    executing_ = true;
    for (std::size_t left = blocksPerJob; left > 0 && !blocks_.empty() && target_ == on; --left)
        runOldest(lock);
    finish(lock);
}

void SerialDispatchQueue::runOldest(Lock& lock) {
    const Running running(*this);
    Block block = std::move(blocks_.front());
    blocks_.pop_front();
    lock.unlock();
    guarded(kExceptionInDispatchQueue, block);
    block = nullptr; // its captures are released without the lock
    lock.lock();
}

void SerialDispatchQueue::finish(Lock& lock) {
    executing_ = false;
    changed_.notify_all();
    scheduleIfNeeded(lock);
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
    Lock lock(mutex_);
    while (!waiter.isDone) {
        const auto on = target_;
        lock.unlock();
        // A job that waits in a target that the caller holds could not run before we return.
        const bool held = on->isCurrent() || on->isHeldByCaller();
        lock.lock();
        if (!held && (executing_ || !blocks_.empty())) {
            waitFor(lock, waiter, on);
            continue;
        }
        changed_.wait(lock, [&] { return !executing_ || waiter.isDone || target_ != on; });
        if (executing_ || waiter.isDone || target_ != on)
            continue;
        lock.unlock();
        runHere(*on, waiter);
        lock.lock();
    }
    lock.unlock();
    if (waiter.thrown)
        std::rethrow_exception(waiter.thrown);
}

/// Until the block has run in its turn, or the queue has another target than `on`.
void SerialDispatchQueue::waitFor(Lock& lock, Waiter& waiter,
                                  const std::shared_ptr<DispatchQueue>& on) {
    if (!std::exchange(waiter.isQueued, true))
        blocks_.emplace_back([&] { run(waiter); });
    scheduleIfNeeded(lock);
    changed_.wait(lock, [&] { return waiter.isDone || target_ != on; });
}

/// Runs what waits and then the block on the calling thread, in a turn of the target. The queue is
/// taken only when that turn has come: whoever holds the target may need the queue until then. The
/// block is not done afterwards when somebody else has the queue or it has got another target.
void SerialDispatchQueue::runHere(DispatchQueue& on, Waiter& waiter) {
    on.sync([&] {
        Lock lock(mutex_);
        if (executing_ || waiter.isDone)
            return;
        executing_ = true;
        const auto isOurs = [&] { return !waiter.isDone && target_.get() == &on; };
        std::size_t left = blocks_.size();
        for (; left > 0 && isOurs(); --left)
            runOldest(lock);
        if (isOurs() && !waiter.isQueued) {
            lock.unlock();
            const Running running(*this);
            run(waiter);
            lock.lock();
        }
        finish(lock);
    });
}

void SerialDispatchQueue::run(Waiter& waiter) {
    std::exception_ptr thrown;
    try {
        waiter.block();
    } catch (...) {
        thrown = std::current_exception();
    }
    const std::lock_guard lock(mutex_);
    waiter.thrown = thrown;
    waiter.isDone = true;
    changed_.notify_all();
}

} // namespace platform
