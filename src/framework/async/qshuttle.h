#pragma once

#include "framework/async/Signal.h"
#include "framework/async/SpinFlag.h"
#include "framework/async/Task.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <string>

namespace QN::async {

/// The state of one queue, shared by its handle, the manager and the worker that runs its tasks. It
/// decides which task may run next; the manager decides which worker runs it. Any thread, unless a
/// function says otherwise.
///
/// A serial queue keeps an empty entry at the front while one of its tasks runs: no further task
/// may start then.
class qshuttle {
  public:
    qshuttle(std::string name, bool serial, std::int32_t priority);

    [[nodiscard]] const std::string& name() const noexcept { return name_; }
    [[nodiscard]] bool isSerial() const noexcept { return serial_; }

    /// Background queues never make the pool grow past its base size.
    [[nodiscard]] bool is_background() const noexcept { return priority_ < -253; }

    /// Appends a task. Returns whether a worker must be found for it: not while the queue is
    /// suspended, and not if a worker will return to the queue anyway.
    [[nodiscard]] bool append(TaskEntry task);

    /// Moves the oldest task out if it may run now, and counts it as running. `left` is set to
    /// whether more tasks could run at the same time.
    [[nodiscard]] bool take(TaskEntry& task, bool& left);

    /// A worker calls this after it has run a task: removes the serial queue's mark and, if `goOn`,
    /// moves the next task out, which counts as running instead of the old one. False if there is
    /// none.
    [[nodiscard]] bool takeNext(TaskEntry& task, bool goOn);

    /// One task has ended. Returns how many were running before.
    std::uint64_t finish() noexcept { return running_.fetch_sub(1); }
    [[nodiscard]] std::uint64_t running() const noexcept { return running_.load(); }

    /// Within this time the workers of a queue must have started another of its tasks to count as
    /// making progress: longer than a busy machine keeps a thread from running. This is about
    /// threads, so it is real time.
    static constexpr std::chrono::milliseconds patience{10};

    /// What a scheduling pass needs to know about the queue.
    struct Snapshot {
        bool isRunnable; ///< a task may run now
        bool isShared;   ///< other tasks of the queue are running
        bool isMoving;   ///< a worker has gone on to its next task within the last `patience`
        bool isOver;     ///< nothing to run, and the handle is being destroyed
    };

    /// Also sets the drained signal if nothing is left to run. The manager's thread only.
    Snapshot snapshot();

    /// Notes that a pass has found no worker for the queue, so that append() does not request
    /// another pass in vain. The next worker that becomes free makes the manager check again.
    void leaveToWorkers();

    void suspend();

    /// Takes back one suspend(), if there was one, or all of them.
    void resume();
    void resumeWholly();
    [[nodiscard]] bool isSuspended() const;

    void becomeZombie() noexcept { zombie_.store(1); }
    [[nodiscard]] bool isZombie() const noexcept { return zombie_.load() != 0; }

    Signal& drained() noexcept { return drained_; }

  private:
    bool isRunnable() const noexcept REQUIRES(flag_);
    void moveOut(TaskEntry& task) REQUIRES(flag_);

    mutable SpinFlag flag_;
    std::deque<TaskEntry> pending_ GUARDED_BY(flag_);
    Signal drained_; // set and cleared under flag_
    std::int32_t suspendCount_ GUARDED_BY(flag_) = 0;
    std::atomic<std::uint64_t> running_{0};
    std::atomic<std::uint8_t> zombie_{0};
    const bool serial_;
    const std::int32_t priority_;
    const std::string name_;

    bool leftToWorkers_ GUARDED_BY(flag_) = false;
    bool hasMoved_ GUARDED_BY(flag_) = false;                           // since the last snapshot
    std::chrono::steady_clock::time_point lastMoved_ GUARDED_BY(flag_); // as of the snapshots
};

} // namespace QN::async
