#pragma once

#include "framework/async/SpinFlag.h"
#include "framework/async/Statistics.h"
#include "framework/async/WorkerPool.h"
#include "framework/async/managed_task_helper.h"
#include "framework/async/qshuttle.h"
#include "platform/base/Mutex.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

namespace QN::async {

/// Assigns tasks to workers. Its own thread does so in scheduling passes, one at a time for any
/// number of requests; only that thread creates and retires workers.
///
/// Most tasks take a shortcut, which looks the same from outside: a new task goes directly to a
/// free worker, and a worker that has run a task continues with the next one of the same queue. A
/// pass would have chosen the same task, since it only takes a queue's oldest one, for an idle
/// worker. As soon as a pass finds a queue that gets no worker at all, both shortcuts are closed
/// until each queue has had its turn.
class manager {
  public:
    /// The manager of this process, created and started on first use and never destroyed. Throws
    /// std::system_error when its thread cannot be started.
    static manager& shared();

    /// True in a child made by fork(2) while the pool was running: the child has none of its
    /// threads, and any of its locks may stay locked for ever.
    [[nodiscard]] static bool isOrphaned() noexcept;

    manager();

    void start();

    /// Requests the registration of a queue. Any thread. Before start() the main dispatch queue
    /// does it.
    void enroll(std::shared_ptr<qshuttle> queue);

    /// Registers a queue. The manager's thread only.
    void add(std::shared_ptr<qshuttle> queue) REQUIRES(turn_);

    /// Requests a scheduling pass that sees all queues in their current or a later state. Any
    /// thread.
    void dispatch() noexcept;

    /// Finds a worker for the queue's oldest task. Any thread.
    void offer(const std::shared_ptr<qshuttle>& queue);

    [[nodiscard]] const Statistics& statistics() const noexcept { return statistics_; }
    [[nodiscard]] std::uint32_t workerCount() const noexcept { return pool_.size(); }

  private:
    struct Pass;

    // On the manager's thread, or the main dispatch queue before there is one.
    worker::Timeout round() EXCLUDES(turn_);
    void lookAgain() REQUIRES(turn_);
    void runTasks() REQUIRES(turn_);
    std::optional<managed_task_helper> takeTask() EXCLUDES(flag_);
    void schedule_pass() REQUIRES(turn_);
    void handOut(Pass& pass) REQUIRES(turn_);
    void serve(const std::shared_ptr<qshuttle>& queue, Pass& pass) REQUIRES(turn_);
    worker* findWorker(qshuttle& queue, const qshuttle::Snapshot& snapshot) REQUIRES(turn_);
    worker* leaveWaiting(qshuttle& queue, bool isShared) REQUIRES(turn_);
    worker& createWorker() REQUIRES(turn_);
    void creationFailed(const char* text) REQUIRES(turn_);
    void removeFinishedQueues() REQUIRES(turn_);
    void retireSurplus();

    // Any thread.
    void perform(managed_task_helper task);
    void runOnMainQueue();
    bool handOver(const std::shared_ptr<qshuttle>& queue, worker& to, bool& left);

    // On workers.
    void work(worker& self);
    void runTasksOf(const std::shared_ptr<qshuttle>& queue, TaskEntry& task);
    void complete(worker& self, std::shared_ptr<qshuttle> queue);

    std::atomic<bool> passRequested_{false};
    SpinFlag flag_;
    std::deque<managed_task_helper> tasks_ GUARDED_BY(flag_);
    platform::Mutex turn_; // held by whoever runs tasks_: the thread, or the main queue before it

    // In the order of registration.
    std::vector<std::shared_ptr<qshuttle>> queues_ GUARDED_BY(turn_);
    // Where the next pass begins; null: at the first.
    const qshuttle* next_ GUARDED_BY(turn_) = nullptr;
    // Since the last pass that found a worker wherever it needed one: passes that ended at the
    // thread limit, and passes that ended because the system gave no thread.
    std::uint32_t failures_ GUARDED_BY(turn_) = 0;
    std::uint32_t refusals_ GUARDED_BY(turn_) = 0;
    // The next round makes a pass even if none was requested.
    bool looksAgain_ GUARDED_BY(turn_) = false;

    WorkerPool pool_;
    std::atomic<std::int64_t> running_{0};  // tasks of all queues
    std::atomic<bool> lacksWorkers_{false}; // the last pass left tasks that a free worker could run
    std::atomic<bool> starves_{false};      // some of them in queues of which nothing runs
    Statistics statistics_;
    worker thread_;
};

} // namespace QN::async
