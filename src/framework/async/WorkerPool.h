#pragma once

#include "framework/async/SpinFlag.h"
#include "framework/async/worker.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>

namespace QN::async {

/// The workers that run tasks. Only the manager's thread creates and retires them; any thread may
/// claim a free one, which then lives at least until it is released.
class WorkerPool {
  public:
    using Round = std::function<worker::Timeout(worker&)>;

    /// Claims and returns the first free worker; null if all are busy.
    worker* claim();
    void release(worker& claimed) noexcept;

    /// Adds a new worker, claimed and running. Throws std::system_error if no thread can be
    /// started.
    worker& create(Round round);

    /// Ends the first free worker; false if there is none.
    [[nodiscard]] bool retire();

    [[nodiscard]] std::uint32_t size() const noexcept { return size_.load(); }

  private:
    worker* claimUnderFlag() noexcept REQUIRES(flag_);

    SpinFlag flag_;
    std::list<worker> workers_ GUARDED_BY(flag_);
    std::atomic<std::uint32_t> size_{0};
    std::atomic<std::int64_t> free_{0};
};

} // namespace QN::async
