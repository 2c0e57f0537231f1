#pragma once

#include "comm/MVCommMessages.h"

class MVCommunication;

/// One queued send: an operation of a server with its message. The message is copied; the target's
/// destructor waits for its operations.
class MVCommOperation {
  public:
    using Action = void (MVCommunication::*)(const MVCommConsoleMessage&);

    MVCommOperation(MVCommunication& target, Action action,
                    const MVCommConsoleMessage& object) noexcept
        : target_(&target), action_(action), object_(object) {}

    /// Performs the action. On the thread of the queue that the operation was added to.
    void main() const { (target_->*action_)(object_); }

    [[nodiscard]] bool isConcurrent() const noexcept { return false; }

  private:
    MVCommunication* target_;
    Action action_;
    MVCommConsoleMessage object_;
};
