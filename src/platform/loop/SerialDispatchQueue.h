#pragma once

#include "platform/loop/DispatchQueue.h"

#include <condition_variable>
#include <deque>
#include <mutex>

namespace platform {

/// The serial kind of DispatchQueue. While it has blocks, one job is queued in its target queue;
/// the job runs a few blocks and queues another job if more are left.
class SerialDispatchQueue final : public DispatchQueue {
  public:
    SerialDispatchQueue(std::string label, std::shared_ptr<DispatchQueue> target);

    void async(Block block) override;
    void setTarget(std::shared_ptr<DispatchQueue> target) override;

  protected:
    void syncFromOutside(const Block& block) override;
    bool isHeldByCaller() const noexcept override;

  private:
    using Lock = std::unique_lock<std::mutex>;
    struct Waiter;

    std::shared_ptr<DispatchQueue> target() const;
    void scheduleIfNeeded(Lock& lock);
    void runJob(const std::shared_ptr<DispatchQueue>& on);
    void runOldest(Lock& lock);
    void finish(Lock& lock);
    void waitFor(Lock& lock, Waiter& waiter, const std::shared_ptr<DispatchQueue>& on);
    void runHere(DispatchQueue& on, Waiter& waiter);
    void run(Waiter& waiter);

    mutable std::mutex mutex_;
    std::condition_variable changed_; // execution or a waited-for block ended, another target
    // Guarded by mutex_.
    std::shared_ptr<DispatchQueue> target_;
    std::deque<Block> blocks_;
    bool scheduled_ = false; // a job waits in a target queue
    bool executing_ = false; // some thread runs blocks, or is about to
};

} // namespace platform
