#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

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

    void addThread();
    void work();

    std::mutex mutex_;
    std::condition_variable changed_;
    // Guarded by mutex_.
    std::deque<std::function<void()>> jobs_;
    std::size_t threads_ = 0;
    std::size_t idle_ = 0;
};

} // namespace platform
