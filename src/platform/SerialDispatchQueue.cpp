#include "platform/SerialDispatchQueue.h"

#include "platform/ExceptionReport.h"

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
    block = nullptr; // what it holds is let go without the lock
    lock.lock();
}

void SerialDispatchQueue::finish(Lock& lock) {
    executing_ = false;
    finished_.notify_all();
    scheduleIfNeeded(lock);
}

bool SerialDispatchQueue::isHeldByCaller() const noexcept {
    return isCurrent() || target()->isHeldByCaller();
}

void SerialDispatchQueue::syncFromOutside(const Block& block) {
    for (;;) {
        const auto on = target();
        // A job that waits in a target that the caller holds could not run before we return.
        const bool held = on->isCurrent() || on->isHeldByCaller();
        Lock lock(mutex_);
        if (held)
            finished_.wait(lock, [this] { return !executing_; });
        if (target_ != on)
            continue;
        if (!held && (executing_ || !blocks_.empty())) {
            waitFor(lock, block);
            return;
        }
        lock.unlock();
        if (runHere(*on, block))
            return;
    }
}

/// Runs what waits and then `block` on the calling thread, in a turn of the target. The queue is
/// taken only when that turn has come: whoever holds the target may need the queue until then.
/// False, with nothing done, when somebody else has it or it has got another target.
bool SerialDispatchQueue::runHere(DispatchQueue& on, const Block& block) {
    bool ran = false;
    std::exception_ptr thrown;
    on.sync([&] {
        Lock lock(mutex_);
        if (executing_ || target_.get() != &on)
            return;
        ran = true;
        executing_ = true;
        for (std::size_t left = blocks_.size(); left > 0; --left)
            runOldest(lock);
        lock.unlock();
        {
            const Running running(*this);
            try {
                block();
            } catch (...) {
                thrown = std::current_exception();
            }
        }
        lock.lock();
        finish(lock);
    });
    if (thrown)
        std::rethrow_exception(thrown);
    return ran;
}

void SerialDispatchQueue::waitFor(Lock& lock, const Block& block) {
    bool done = false; // guarded by mutex_, like `thrown`
    std::exception_ptr thrown;
    blocks_.emplace_back([&] {
        std::exception_ptr caught;
        try {
            block();
        } catch (...) {
            caught = std::current_exception();
        }
        const std::lock_guard inner(mutex_);
        thrown = caught;
        done = true;
        finished_.notify_all();
    });
    scheduleIfNeeded(lock);
    finished_.wait(lock, [&done] { return done; });
    lock.unlock();
    if (thrown)
        std::rethrow_exception(thrown);
}

} // namespace platform
