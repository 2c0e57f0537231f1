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
/// queue lives until its last owner lets it go and its last block has run; the process does not
/// wait for blocks at its end. Any thread.
class DispatchQueue : public std::enable_shared_from_this<DispatchQueue> {
  public:
    using Block = std::function<void()>;

    /// A new serial queue on the global queue. `label` names it in a debugger, in reverse-domain
    /// form.
    static std::shared_ptr<DispatchQueue> makeSerial(std::string label);

    /// The queue of default priority. Its blocks, and those of serial queues on it, may wait, but
    /// not for each other without end: at most 16 run at once, in all of the process.
    static const std::shared_ptr<DispatchQueue>& global();

    static const std::shared_ptr<DispatchQueue>& main();

    virtual ~DispatchQueue() = default;
    DispatchQueue(const DispatchQueue&) = delete;
    DispatchQueue& operator=(const DispatchQueue&) = delete;

    /// Submits a block and returns at once.
    virtual void async(Block block) = 0;

    /// Has a block run in its turn, often on the calling thread, and waits until it has; an
    /// exception of it goes to the caller. In place from a block of this very queue or of one that
    /// targets it, and for the main queue from the main thread. From elsewhere it waits for the
    /// main queue to be served.
    void sync(const Block& block);

    /// Sets the queue on which a serial queue runs the blocks that have not begun; null is the
    /// global queue. Queues that share a serial or the main queue as their target never run blocks
    /// at the same time. Targets must not form a circle. Ignored by the global and the main queue.
    ///
    /// A sync() that waits follows its own queue to a new target. It does not notice that a target
    /// further down the chain changes: do not retarget a queue while somebody waits in sync() on a
    /// queue that targets it.
    virtual void setTarget(std::shared_ptr<DispatchQueue> target) = 0;

    /// Whether the calling thread is running a block of this queue, or of one that targets it.
    bool isCurrent() const noexcept;

    const std::string& label() const noexcept { return label_; }

    /// Marks the calling thread as running blocks of a queue while it lives. For the queues.
    class Running {
      public:
        explicit Running(const DispatchQueue& queue) noexcept;
        ~Running();
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;

        const DispatchQueue& queue() const noexcept { return queue_; }
        const Running* outer() const noexcept { return outer_; }

      private:
        const DispatchQueue& queue_;
        const Running* const outer_;
    };

  protected:
    friend class SerialDispatchQueue;

    explicit DispatchQueue(std::string label) : label_(std::move(label)) {}

    /// sync() from where the queue is not current.
    virtual void syncFromOutside(const Block& block) = 0;

    /// Whether no block of this queue can run anywhere else as long as the caller does not return,
    /// so that waiting for one would be for ever.
    virtual bool isHeldByCaller() const noexcept = 0;

  private:
    const std::string label_;
};

} // namespace platform
