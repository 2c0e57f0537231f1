#include "framework/async/worker.h"

#include "framework/async/ExceptionLine.h"
#include "framework/async/qshuttle.h"
#include "platform/base/Mutex.h"

#include "platform/base/CallStack.h"
#include "platform/base/ThreadCalls.h"

#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace QN::async {

namespace {

thread_local worker* ownWorker = nullptr;

constexpr std::chrono::seconds idlePeriod{1};

} // namespace

worker::worker(std::string name, std::function<Timeout(worker&)> round, std::function<void()> idle)
    : name_(std::move(name)), round_(std::move(round)), idle_(std::move(idle)) {}

worker::~worker() {
    if (!isStarted())
        return;
    stop_ = true;
    wake();
    ::pthread_join(thread_, nullptr);
}

void worker::start() {
    const int error = platform::threadCalls().start(&thread_, &worker::body, this);
    if (error != 0)
        throw platform::TracedError<std::system_error>(error, std::system_category(),
                                                       "QN::async has got no thread");
    started_ = true;
    wake(); // thread_ is known from now on
}

bool worker::claim() noexcept {
    return !claimed_.load() && !claimed_.exchange(true);
}

void worker::give(const std::shared_ptr<qshuttle>& queue, TaskEntry task) {
    const platform::ScopedLock lock(flag_);
    if (isStarted() && (!tasks_.empty() || stop_)) {
        std::fprintf(stderr, "QN::async %s worker not idle!\n", queue->name().c_str());
        std::abort();
    }
    tasks_.push_back(std::move(task));
    queue_ = queue;
    wake(); // under the flag: else a worker that is awake could run the task and be retired before
}

std::shared_ptr<qshuttle> worker::take(TaskEntry& task) {
    const platform::ScopedLock lock(flag_);
    if (tasks_.empty())
        return nullptr;
    task = std::move(tasks_.front());
    tasks_.pop_front();
    return queue_.lock();
}

void worker::forgetQueue() {
    const platform::ScopedLock lock(flag_);
    queue_.reset();
}

bool worker::runsTaskOf(const qshuttle& queue) const {
    const platform::ScopedLock lock(flag_);
    return queue_.lock().get() == &queue;
}

worker* worker::current() noexcept {
    return ownWorker;
}

worker::CurrentOverride::CurrentOverride(worker& who) noexcept {
    ownWorker = &who;
}

worker::CurrentOverride::~CurrentOverride() {
    ownWorker = nullptr;
}

void* worker::body(void* self) {
    static_cast<worker*>(self)->live();
    return nullptr;
}

void worker::live() {
    if (!name_.empty())
        platform::nameThisThread(name_);
    ownWorker = this;
    wake_.wait();
    for (;;) {
        const Timeout bound = round_(*this);
        if (stop_)
            return;
        sleep(bound);
    }
}

void worker::sleep(Timeout bound) {
    if (!bound && !idle_) {
        wake_.wait();
        return;
    }
    if (wake_.waitFor(bound.value_or(idlePeriod)) || bound)
        return;
    try {
        idle_();
    } catch (...) {
        printCurrentException(__LINE__);
    }
}

} // namespace QN::async
