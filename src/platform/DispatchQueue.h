#pragma once

#include <functional>
#include <memory>
#include <string>

namespace platform {

/// A serial queue: runs blocks one at a time, in the order of submission, on a small pool of
/// threads that all queues share, so a queue costs no thread of its own. A block that throws is
/// reported (ExceptionReport) and the next one runs.
class DispatchQueue {
  public:
    /// `label` names the queue in a debugger, in reverse-domain form.
    explicit DispatchQueue(std::string label);

    /// Waits until every submitted block has run. Not from a block of the same queue.
    ~DispatchQueue();
    DispatchQueue(const DispatchQueue&) = delete;
    DispatchQueue& operator=(const DispatchQueue&) = delete;

    /// Submits a block and returns at once. Any thread.
    void async(std::function<void()> block);

    /// Waits until every block that was submitted before the call has run. Any thread, but not
    /// from a block of the same queue.
    void drain();

    const std::string& label() const noexcept;

  private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace platform
