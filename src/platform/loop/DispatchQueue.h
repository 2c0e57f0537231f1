#pragma once

#include <functional>
#include <memory>
#include <string>

namespace platform {

/// A queue that blocks of work are submitted to. Three kinds:
///  - serial queues run their blocks one at a time, in the order of submission, wherever their
///    target queue runs them;
///  - the global queue runs its blocks as they come, several at once, on a small pool of threads
///    that all queues share, so that no queue costs a thread;
///  - the main queue runs its blocks one at a time on the thread that serves it (MainQueue.h).
///
/// A block that throws is reported (ExceptionReport) and the next one runs. Queues are shared: a
/// queue lives until its last owner has released it and its last block has run; the process does
/// not wait for blocks when it exits. Any thread.
class DispatchQueue : public std::enable_shared_from_this<DispatchQueue> {
  public:
    using Block = std::function<void()>;

    /// A new serial queue on the global queue. `label` names it in a debugger, in reverse-domain
    /// form.
    [[nodiscard]] static std::shared_ptr<DispatchQueue> makeSerial(std::string label);

    /// The queue of default priority. Its blocks, and those of serial queues on it, may wait, but
    /// should not wait for each other: at most 16 run at once in the process.
    [[nodiscard]] static const std::shared_ptr<DispatchQueue>& global();

    [[nodiscard]] static const std::shared_ptr<DispatchQueue>& main();

    virtual ~DispatchQueue() = default;
    DispatchQueue(const DispatchQueue&) = delete;
    DispatchQueue& operator=(const DispatchQueue&) = delete;

    /// Submits a block and returns at once.
    virtual void async(Block block) = 0;

    /// Runs a block in its turn, often on the calling thread, and waits for it; its exception is
    /// passed to the caller. Called from a block of this queue or of one that targets it, or for
    /// the main queue from the main thread, it runs the block directly. Otherwise it waits for the
    /// main queue to be served.
    void sync(const Block& block);

    /// Sets the queue on which a serial queue runs the blocks that have not started; null is the
    /// global queue. Queues that share a serial or the main queue as their target never run blocks
    /// at the same time. Targets must not form a cycle. Ignored by the global and the main queue.
    ///
    /// A waiting sync() follows its own queue to a new target, but does not notice a change further
    /// down the chain: do not retarget a queue while a thread waits in sync() on a queue that
    /// targets it.
    virtual void setTarget(std::shared_ptr<DispatchQueue> target) = 0;

    /// Whether the calling thread is running a block of this queue, or of one that targets it.
    [[nodiscard]] bool isCurrent() const noexcept;

    [[nodiscard]] const std::string& label() const noexcept { return label_; }

    /// While it lives, marks the calling thread as running blocks of a queue. For the queue
    /// classes.
    class Running {
      public:
        explicit Running(const DispatchQueue& queue) noexcept;
        ~Running();
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;

        [[nodiscard]] const DispatchQueue& queue() const noexcept { return queue_; }
        [[nodiscard]] const Running* outer() const noexcept { return outer_; }

      private:
        const DispatchQueue& queue_;
        const Running* const outer_;
    };

  protected:
    friend class SerialDispatchQueue;

    explicit DispatchQueue(std::string label) : label_(std::move(label)) {}

    /// sync() from outside this queue.
    virtual void syncFromOutside(const Block& block) = 0;

    /// Whether no block of this queue can run on another thread until the caller returns, so that
    /// waiting for one would deadlock.
    [[nodiscard]] virtual bool isHeldByCaller() const noexcept = 0;

  private:
    const std::string label_;
};

} // namespace platform
