#pragma once

#include "platform/base/Mutex.h"

#include <cstddef>
#include <deque>
#include <functional>

namespace platform {

/// The threads behind all dispatch queues, started on demand. They live as long as the process,
/// which does not wait for them. Any thread.
class DispatchThreads {
  public:
    /// Enough for blocks that wait for other programs, few enough to be cheap.
    static constexpr std::size_t mostThreads = 16;

    static DispatchThreads& instance();

    DispatchThreads(const DispatchThreads&) = delete;
    DispatchThreads& operator=(const DispatchThreads&) = delete;

    /// Runs `job` on one of the threads, in the order of submission as far as threads are free. It
    /// must not throw. If not even one thread can be started, the job waits, with a line in the
    /// system log, until a later submission starts one.
    void submit(std::function<void()> job);

  private:
    DispatchThreads() = default;

    void addThread() REQUIRES(mutex_);
    void work() EXCLUDES(mutex_);

    Mutex mutex_;
    Condition changed_;
    std::deque<std::function<void()>> jobs_ GUARDED_BY(mutex_);
    std::size_t threads_ GUARDED_BY(mutex_) = 0;
    std::size_t idle_ GUARDED_BY(mutex_) = 0;
};

} // namespace platform
