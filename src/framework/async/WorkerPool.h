#pragma once

#include "framework/async/SpinFlag.h"
#include "framework/async/worker.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>

namespace QN::async {

/// The workers that run tasks. The manager's thread alone makes and retires them; any thread may
/// claim a free one, and it stays in being until whoever claimed it has released it.
class WorkerPool {
  public:
    using Round = std::function<worker::Timeout(worker&)>;

    /// The first free worker, claimed; null when all have something to do.
    worker* claim();
    void release(worker& claimed) noexcept;

    /// Appends a new worker, claimed and running. Throws what the making of a thread throws.
    worker& create(Round round);

    /// Ends the first free worker; false when there is none.
    bool retire();

    std::uint32_t size() const noexcept { return size_.load(); }

  private:
    worker* claimUnderFlag() noexcept;

    SpinFlag flag_;
    std::list<worker> workers_; // guarded by flag_
    std::atomic<std::uint32_t> size_{0};
    std::atomic<std::int64_t> free_{0};
};

} // namespace QN::async
