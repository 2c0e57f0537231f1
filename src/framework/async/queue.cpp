#include "framework/async/queue.h"

#include "platform/base/CallStack.h"

#include "framework/async/manager.h"
#include "framework/async/qshuttle.h"
#include "framework/async/worker.h"

#include <chrono>
#include <stdexcept>
#include <thread>
#include <utility>

namespace QN::async {

queue::queue(std::string name, bool serial, std::int32_t priority)
    : shuttle_(std::make_shared<qshuttle>(std::move(name), serial, priority)) {
    manager& pool = manager::shared();
    if (!manager::isOrphaned())
        pool.enroll(shuttle_);
}

queue::~queue() {
    if (!manager::isOrphaned())
        drain();
}

void queue::drain() {
    using namespace std::chrono_literals;
    shuttle_->resumeWholly();
    shuttle_->becomeZombie();
    const worker* const self = worker::current();
    if (!self || !self->runsTaskOf(*shuttle_)) {
        wait();
        return;
    }
    while (shuttle_->running() >= 2)
        std::this_thread::sleep_for(10ms);
}

void queue::enqueue(Task task) {
    append(std::move(task), nullptr);
}

std::future<void> queue::enqueueWithFuture(Task task) {
    auto promise = std::make_unique<std::promise<void>>();
    std::future<void> future = promise->get_future();
    append(std::move(task), std::move(promise));
    return future;
}

void queue::append(Task task, std::unique_ptr<std::promise<void>> promise) {
    if (!task)
        throw platform::TracedError<std::runtime_error>("invalid task!");
    if (shuttle_->isZombie())
        throw platform::TracedError<std::runtime_error>("zombie queue!");
    if (manager::isOrphaned())
        return;
    if (shuttle_->append({std::move(task), std::move(promise)}))
        manager::shared().offer(shuttle_);
}

void queue::wait() {
    if (manager::isOrphaned())
        return;
    if (shuttle_->isSuspended())
        throw platform::TracedError<std::runtime_error>("wait on suspended queue!");
    shuttle_->drained().request([] { manager::shared().dispatch(); });
}

bool queue::isOrphaned() noexcept {
    return manager::isOrphaned();
}

void queue::suspend() {
    if (!manager::isOrphaned())
        shuttle_->suspend();
}

void queue::resume() {
    if (manager::isOrphaned())
        return;
    shuttle_->resume();
    manager::shared().dispatch();
}

} // namespace QN::async
