#include "framework/async/manager.h"

#include "framework/async/ExceptionLine.h"
#include "framework/async/ThreadLimit.h"
#include "platform/base/Mutex.h"

#include "platform/base/CallStack.h"
#include "platform/base/ThreadCalls.h"
#include "platform/loop/DispatchQueue.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <pthread.h>
#include <system_error>
#include <utility>

namespace QN::async {

namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t mostFailures = 5;
constexpr std::chrono::nanoseconds failurePause = 100ms;
constexpr std::chrono::nanoseconds refusalPause = 5ms;
constexpr std::chrono::nanoseconds rest = 1s; // after which a pool that has grown shrinks

std::atomic<bool> orphaned{false};

class ThreadLimitError : public platform::TracedError<std::system_error> {
  public:
    ThreadLimitError() : TracedError(EAGAIN, std::generic_category()) {}
    const char* what() const noexcept override { return "QN::async has hit its thread limit"; }
};

void run(TaskEntry& task) {
    std::exception_ptr error;
    try {
        task.callable();
    } catch (...) {
        printCurrentException(__LINE__);
        error = std::current_exception();
    }
    task.callable = nullptr; // what the task holds goes before anybody learns that it has run
    if (const auto promise = std::move(task.promise)) {
        if (error)
            promise->set_exception(error);
        else
            promise->set_value();
    }
}

} // namespace

struct manager::Pass {
    std::size_t handedOut = 0;
    bool tasksLeft = false; ///< in queues that were given a worker in this round
    bool isCutShort = false;
    bool hasFinishedQueues = false;
};

manager& manager::shared() {
    static manager& one = [&]() -> manager& {
        auto made = std::make_unique<manager>();
        ::pthread_atfork(nullptr, nullptr, [] { orphaned = true; });
        made->start();
        return *made.release();
    }();
    return one;
}

bool manager::isOrphaned() noexcept {
    return orphaned.load(std::memory_order_relaxed);
}

manager::manager() : thread_("QN::async::manager", [this](worker&) { return round(); }) {}

void manager::start() {
    thread_.start();
}

void manager::enroll(std::shared_ptr<qshuttle> queue) {
    perform(
        managed_task_helper([this, queue = std::move(queue)]() REQUIRES(turn_) { add(queue); }));
}

void manager::add(std::shared_ptr<qshuttle> queue) {
    queues_.push_back(std::move(queue));
    ++statistics_.additions;
    // What was asked for the queue until now may have been left to a pass before it was known.
    dispatch();
}

void manager::dispatch() noexcept {
    ++statistics_.dispatchRequests;
    // A pass that has been requested clears the mark before it looks at anything, so it will see
    // whatever the caller has done before it found the mark.
    if (passRequested_.load() || passRequested_.exchange(true))
        return;
    try {
        perform(managed_task_helper([this]() REQUIRES(turn_) { schedule_pass(); }));
    } catch (...) {
        passRequested_ = false;
        printCurrentException(__LINE__);
    }
}

void manager::perform(managed_task_helper task) {
    {
        const platform::ScopedLock lock(flag_);
        tasks_.push_back(std::move(task));
    }
    if (thread_.isStarted())
        thread_.wake();
    else
        platform::DispatchQueue::main()->async([this] { runOnMainQueue(); });
}

void manager::runOnMainQueue() {
    const platform::ScopedLock lock(turn_);
    if (thread_.isStarted())
        return; // it was woken when it was started
    const worker::CurrentOverride asManager(thread_);
    runTasks();
}

worker::Timeout manager::round() {
    const platform::ScopedLock lock(turn_);
    if (std::exchange(looksAgain_, false) && !passRequested_)
        lookAgain();
    runTasks();
    if (looksAgain_)
        return qshuttle::patience;
    looksAgain_ = pool_.size() > baseSize();
    return looksAgain_ ? worker::Timeout(rest) : std::nullopt;
}

/// A pass that was not requested: dispatch() would wake this thread, which should sleep.
void manager::lookAgain() {
    try {
        schedule_pass();
    } catch (...) {
        printCurrentException(__LINE__);
    }
}

void manager::runTasks() {
    while (auto task = takeTask()) {
        try {
            task->run();
        } catch (...) {
            printCurrentException(__LINE__);
        }
    }
}

std::optional<managed_task_helper> manager::takeTask() {
    const platform::ScopedLock lock(flag_);
    if (tasks_.empty())
        return std::nullopt;
    std::optional task(std::move(tasks_.front()));
    tasks_.pop_front();
    return task;
}

void manager::schedule_pass() {
    passRequested_.exchange(false);
    ++statistics_.passes;
    lacksWorkers_ = false;
    starves_ = false;
    Pass pass;
    try {
        do {
            pass.tasksLeft = false;
            handOut(pass);
        } while (pass.tasksLeft && !pass.isCutShort);
    } catch (const std::exception& error) {
        creationFailed(error.what());
        return;
    }
    failures_ = 0;
    refusals_ = 0;
    if (pass.hasFinishedQueues)
        removeFinishedQueues();
    if (pass.isCutShort)
        dispatch();
    else if (pass.handedOut == 0)
        retireSurplus();
}

/// One round over all queues, in the order of registration from where the last pass came to its
/// end, so that queues far down the list get their turn when workers are few.
void manager::handOut(Pass& pass) {
    const auto first = std::find_if(
        queues_.begin(), queues_.end(),
        [next = std::exchange(next_, nullptr)](const auto& queue) { return queue.get() == next; });
    const std::size_t count = queues_.size();
    const std::size_t start = first == queues_.end() ? 0 : std::size_t(first - queues_.begin());
    for (std::size_t i = 0; i < count; ++i) {
        const auto& queue = queues_[(start + i) % count];
        if (pass.handedOut >= baseSize()) {
            pass.isCutShort = true;
            if (!next_)
                next_ = queue.get();
            return;
        }
        serve(queue, pass);
    }
}

void manager::serve(const std::shared_ptr<qshuttle>& queue, Pass& pass) {
    const qshuttle::Snapshot snapshot = queue->snapshot();
    pass.hasFinishedQueues |= snapshot.isOver;
    if (!snapshot.isRunnable)
        return;
    worker* const found = findWorker(*queue, snapshot);
    if (!found)
        return;
    bool left = false;
    if (!handOver(queue, *found, left)) {
        pool_.release(*found); // its task has taken a shortcut meanwhile
        return;
    }
    ++pass.handedOut;
    pass.tasksLeft |= left;
}

worker* manager::findWorker(qshuttle& queue, const qshuttle::Snapshot& snapshot) {
    if (worker* const free = pool_.claim())
        return free;
    if (queue.is_background() && pool_.size() >= baseSize())
        return leaveWaiting(queue, snapshot.isShared);
    // Workers that get on with the queue will come to this task: making more of them would only
    // have them get in each other's way. Whether they do is looked at again soon.
    if (snapshot.isShared && snapshot.isMoving) {
        looksAgain_ = true;
        return leaveWaiting(queue, snapshot.isShared);
    }
    return &createWorker();
}

/// Sees to it that the next worker that gets free asks for a pass, and answers one that has got
/// free before it could know that.
worker* manager::leaveWaiting(qshuttle& queue, bool isShared) {
    lacksWorkers_ = true;
    queue.leaveToWorkers();
    if (!isShared) {
        starves_ = true;
        if (!next_)
            next_ = &queue;
    }
    return pool_.claim();
}

worker& manager::createWorker() {
    try {
        if (thread_limit() < std::uint64_t{pool_.size()} + 1) {
            ++failures_;
            throw ThreadLimitError();
        }
        failures_ = 0;
        return pool_.create([this](worker& self) {
            work(self);
            return worker::Timeout();
        });
    } catch (...) {
        ++statistics_.creationFailures;
        // A refusal that is repeated would only fill the output with the same line.
        if (failures_ > 0 || refusals_++ == 0)
            printCurrentException(__LINE__);
        throw;
    }
}

void manager::creationFailed(const char* text) {
    if (failures_ >= mostFailures) {
        std::fprintf(stderr, "%s\n", text);
        std::abort();
    }
    if (failures_ > 0)
        platform::threadCalls().pause(failurePause);
    dispatch();
    if (refusals_ > 1)
        platform::threadCalls().pause(refusalPause);
}

void manager::removeFinishedQueues() {
    std::erase_if(queues_, [this](const auto& queue) REQUIRES(turn_) {
        const bool isOver = queue->snapshot().isOver;
        if (isOver && queue.get() == next_)
            next_ = nullptr;
        return isOver;
    });
}

void manager::retireSurplus() {
    if (pool_.size() > baseSize() && running_ == 0 && pool_.retire())
        ++statistics_.retiredWorkers;
}

void manager::offer(const std::shared_ptr<qshuttle>& queue) {
    worker* const free = starves_ ? nullptr : pool_.claim();
    bool left = false;
    if (free && handOver(queue, *free, left))
        return;
    if (free)
        pool_.release(*free);
    dispatch();
}

bool manager::handOver(const std::shared_ptr<qshuttle>& queue, worker& to, bool& left) {
    TaskEntry task;
    if (!queue->take(task, left))
        return false;
    running_.fetch_add(1);
    to.give(queue, std::move(task));
    return true;
}

void manager::work(worker& self) {
    TaskEntry task;
    while (auto queue = self.take(task)) {
        runTasksOf(queue, task);
        complete(self, std::move(queue));
    }
}

void manager::runTasksOf(const std::shared_ptr<qshuttle>& queue, TaskEntry& task) {
    std::uint64_t completed = 0;
    do {
        run(task);
        ++completed;
    } while (queue->takeNext(task, !starves_));
    statistics_.completions += completed;
}

void manager::complete(worker& self, std::shared_ptr<qshuttle> queue) {
    self.forgetQueue();
    running_.fetch_sub(1);
    const bool isSerial = queue->isSerial();
    // Free first: a pass that finds nothing of the queue running must find its worker.
    pool_.release(self);
    const bool wasLast = queue->finish() == 1;
    queue.reset();
    if (wasLast || isSerial || lacksWorkers_)
        dispatch();
}

} // namespace QN::async
