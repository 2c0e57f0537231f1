#pragma once

#include "framework/async/Signal.h"
#include "framework/async/SpinFlag.h"
#include "framework/async/Task.h"

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <pthread.h>
#include <string>

namespace QN::async {

class qshuttle;

/// One thread of the pool, the manager's or one that runs tasks. It makes one round each time it is
/// woken, and sleeps in between. The destructor ends the thread after its current round, and waits
/// for it.
///
/// To run a task on a worker, claim the worker and give it the task; it is free again afterwards.
class worker {
  public:
    /// The maximum time until the next round; unlimited if empty.
    using Timeout = std::optional<std::chrono::nanoseconds>;

    /// `round` is called on the thread. With an `idle` callback the thread sleeps for at most 1 s
    /// and calls it if it was not woken in that time.
    worker(std::string name, std::function<Timeout(worker&)> round,
           std::function<void()> idle = {});
    ~worker();
    worker(const worker&) = delete;
    worker& operator=(const worker&) = delete;

    /// Throws std::system_error when the system gives no thread.
    void start();

    /// Any thread.
    [[nodiscard]] bool isStarted() const noexcept { return started_.load(); }
    void wake() { wake_.set(); }

    /// Reserves a free worker for the caller. A new worker is claimed. Any thread.
    [[nodiscard]] bool claim() noexcept;
    void release() noexcept { claimed_.store(false); }

    /// Gives a claimed worker its task and wakes it. Ends the process if the worker has a task
    /// already or is ending.
    void give(const std::shared_ptr<qshuttle>& queue, TaskEntry task);

    /// On the thread itself: takes its task, and returns the task's queue, or null if there is
    /// none.
    [[nodiscard]] std::shared_ptr<qshuttle> take(TaskEntry& task);
    void forgetQueue();

    /// On the thread itself: whether it is running a task of that queue.
    [[nodiscard]] bool runsTaskOf(const qshuttle& queue) const;

    /// The worker whose thread is calling; null on other threads.
    static worker* current() noexcept;

    /// While it lives, current() returns this worker on the calling thread.
    class CurrentOverride {
      public:
        explicit CurrentOverride(worker& who) noexcept;
        ~CurrentOverride();
        CurrentOverride(const CurrentOverride&) = delete;
        CurrentOverride& operator=(const CurrentOverride&) = delete;
    };

  private:
    static void* body(void* self);
    void live();
    void sleep(Timeout bound);

    const std::string name_;
    const std::function<Timeout(worker&)> round_;
    const std::function<void()> idle_;
    pthread_t thread_{};
    std::atomic<bool> started_{false};
    std::atomic<bool> claimed_{true};
    std::atomic<bool> stop_{false};
    Signal wake_;

    mutable SpinFlag flag_;
    std::deque<TaskEntry> tasks_ GUARDED_BY(flag_);
    std::weak_ptr<qshuttle> queue_ GUARDED_BY(flag_);
};

} // namespace QN::async
