#include "framework/async/qshuttle.h"

#include "platform/base/Mutex.h"

#include <utility>

namespace QN::async {

qshuttle::qshuttle(std::string name, bool serial, std::int32_t priority)
    : serial_(serial), priority_(priority), name_(std::move(name)) {}

bool qshuttle::append(TaskEntry task) {
    const platform::ScopedLock lock(flag_);
    const bool isBusy = serial_ && !pending_.empty() && pending_.front().isEmpty();
    pending_.push_back(std::move(task));
    drained_.clear();
    return suspendCount_ < 1 && !isBusy && !leftToWorkers_;
}

bool qshuttle::isRunnable() const noexcept {
    return suspendCount_ == 0 && !pending_.empty() && !pending_.front().isEmpty();
}

void qshuttle::moveOut(TaskEntry& task) {
    task.callable = std::exchange(pending_.front().callable, nullptr);
    task.promise = std::move(pending_.front().promise);
    if (!serial_)
        pending_.pop_front();
}

bool qshuttle::take(TaskEntry& task, bool& left) {
    const platform::ScopedLock lock(flag_);
    if (!isRunnable())
        return false;
    moveOut(task);
    // The worker that takes it need not be the one that the tasks were left to.
    leftToWorkers_ = false;
    running_.fetch_add(1);
    left = isRunnable();
    return true;
}

bool qshuttle::takeNext(TaskEntry& task, bool goOn) {
    const platform::ScopedLock lock(flag_);
    if (serial_)
        pending_.pop_front();
    if (!goOn || !isRunnable())
        return false;
    moveOut(task);
    hasMoved_ = true;
    return true;
}

qshuttle::Snapshot qshuttle::snapshot() {
    const auto now = std::chrono::steady_clock::now();
    const platform::ScopedLock lock(flag_);
    if (std::exchange(hasMoved_, false))
        lastMoved_ = now;
    leftToWorkers_ = false;
    const std::uint64_t running = running_.load();
    const bool isIdle = suspendCount_ == 0 && pending_.empty() && running == 0;
    // Under the flag, so that a task appended from now on finds a signal to clear.
    if (isIdle)
        drained_.set();
    return {.isRunnable = isRunnable(),
            .isShared = running > 0,
            .isMoving = now - lastMoved_ < patience,
            .isOver = isIdle && isZombie()};
}

void qshuttle::leaveToWorkers() {
    const platform::ScopedLock lock(flag_);
    leftToWorkers_ = isRunnable(); // a worker may have taken the last task since the snapshot
}

void qshuttle::suspend() {
    const platform::ScopedLock lock(flag_);
    ++suspendCount_;
}

void qshuttle::resume() {
    const platform::ScopedLock lock(flag_);
    if (suspendCount_ > 0)
        --suspendCount_;
}

void qshuttle::resumeWholly() {
    const platform::ScopedLock lock(flag_);
    suspendCount_ = 0;
}

bool qshuttle::isSuspended() const {
    const platform::ScopedLock lock(flag_);
    return suspendCount_ >= 1;
}

} // namespace QN::async
