#pragma once

#include "platform/base/Mutex.h"
#include "platform/loop/DispatchQueue.h"

#include <deque>

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
    struct Waiter;

    std::shared_ptr<DispatchQueue> target() const EXCLUDES(mutex_);
    void scheduleIfNeeded() REQUIRES(mutex_);
    void runJob(const std::shared_ptr<DispatchQueue>& on) EXCLUDES(mutex_);
    void runOldest() REQUIRES(mutex_);
    void finish() REQUIRES(mutex_);
    void advance(Waiter& waiter) REQUIRES(mutex_);
    bool isHeld(DispatchQueue& on) REQUIRES(mutex_);
    void waitFor(Waiter& waiter, const std::shared_ptr<DispatchQueue>& on) REQUIRES(mutex_);
    void runHere(DispatchQueue& on, Waiter& waiter) EXCLUDES(mutex_);
    void run(Waiter& waiter) EXCLUDES(mutex_);

    mutable Mutex mutex_;
    Condition changed_; // execution or a waited-for block ended, another target
    std::shared_ptr<DispatchQueue> target_ GUARDED_BY(mutex_);
    std::deque<Block> blocks_ GUARDED_BY(mutex_);
    bool scheduled_ GUARDED_BY(mutex_) = false; // a job waits in a target queue
    bool executing_ GUARDED_BY(mutex_) = false; // some thread runs blocks, or is about to
};

} // namespace platform
