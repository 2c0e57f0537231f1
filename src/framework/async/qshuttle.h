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

/// The state of one queue, shared by its handle, the manager and the worker that runs its tasks.
/// It decides which task may run next; who runs it is the manager's business. Any thread, unless a
/// function says otherwise.
///
/// A serial queue keeps an empty entry at the front while one of its tasks runs: whoever finds it
/// leaves the queue alone.
class qshuttle {
  public:
    qshuttle(std::string name, bool serial, std::int32_t priority);

    const std::string& name() const noexcept { return name_; }
    bool isSerial() const noexcept { return serial_; }

    /// Background queues never make the pool grow past its base size.
    bool is_background() const noexcept { return priority_ < -253; }

    /// Appends a task. True when somebody has to be found to run it: not while the queue is
    /// suspended, and not when a worker will come back to the queue anyway.
    bool append(TaskEntry task);

    /// Moves the oldest task out if it may run now, and counts it as running. `left` says whether
    /// more stay behind that could run at the same time.
    bool take(TaskEntry& task, bool& left);

    /// To be called by a worker that has run a task: takes the serial queue's mark away and, if
    /// `goOn`, moves the next task out, which is counted as running in the old one's place. False
    /// when there is none.
    bool takeNext(TaskEntry& task, bool goOn);

    /// One task runs no more. Answers how many ran until now.
    std::uint64_t finish() noexcept { return running_.fetch_sub(1); }
    std::uint64_t running() const noexcept { return running_.load(); }

    /// How long the workers of a queue are given to show that they get on with its tasks: longer
    /// than a busy machine keeps a thread from running. It is about threads, so real time counts.
    static constexpr std::chrono::milliseconds patience{10};

    /// What a scheduling pass has to know of the queue.
    struct Snapshot {
        bool isRunnable; ///< a task may run now
        bool isShared;   ///< other tasks of the queue are running
        bool isMoving;   ///< a worker has gone on to its next task within the last `patience`
        bool isOver;     ///< nothing to run, and the handle is going or gone
    };

    /// Also sets the drained signal when nothing is left to run. The manager's thread only.
    Snapshot snapshot();

    /// Notes that a pass has found no worker for the queue, so that append() need not ask for
    /// another pass in vain. The next worker that gets free has the manager look again.
    void leaveToWorkers();

    void suspend();

    /// Takes back one suspend(), if there was one, or all of them.
    void resume();
    void resumeWholly();
    bool isSuspended() const;

    void becomeZombie() noexcept { zombie_.store(1); }
    bool isZombie() const noexcept { return zombie_.load() != 0; }

    Signal& drained() noexcept { return drained_; }

  private:
    bool isRunnable() const noexcept;
    void moveOut(TaskEntry& task);

    mutable SpinFlag flag_;
    std::deque<TaskEntry> pending_; // guarded by flag_
    Signal drained_;                // set and cleared under flag_
    std::int32_t suspendCount_ = 0; // guarded by flag_
    std::atomic<std::uint64_t> running_{0};
    std::atomic<std::uint8_t> zombie_{0};
    const bool serial_;
    const std::int32_t priority_;
    const std::string name_;

    bool leftToWorkers_ = false;                      // guarded by flag_
    bool hasMoved_ = false;                           // since the last snapshot; guarded by flag_
    std::chrono::steady_clock::time_point lastMoved_; // as of the snapshots; guarded by flag_
};

} // namespace QN::async
