#pragma once

#include "platform/base/FileDescriptor.h"

#include <string>

namespace platform {

/// A lock file in the runtime directory that shows whether another instance of a program runs in
/// this login session. The kernel releases it when the process ends for any reason, and child
/// programs do not inherit it. Any thread, one at a time.
class SessionLock {
  public:
    /// Opens NAME.lock, which is never removed; does not take the lock yet.
    explicit SessionLock(const std::string& name);

    /// Takes the lock without waiting. False only while another process holds it: if the file
    /// cannot be created or locked, every instance succeeds.
    [[nodiscard]] bool take() noexcept;

  private:
    FileDescriptor file_;
};

} // namespace platform
