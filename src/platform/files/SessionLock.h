#pragma once

#include "platform/base/FileDescriptor.h"

#include <string>

namespace platform {

/// A lock file in the runtime directory, by which a program knows whether another one of its kind
/// runs in this login session. The kernel gives it up when the process ends, however that comes
/// about, and it is not handed down to programs that we start. Any thread, one at a time.
class SessionLock {
  public:
    /// Opens NAME.lock, which stays there afterwards; takes nothing yet.
    explicit SessionLock(const std::string& name);

    /// Takes the lock without waiting. False only while somebody else holds it: where no such file
    /// can be made, or locked, there is nothing to tell starts apart by, and each has its way.
    [[nodiscard]] bool take() noexcept;

  private:
    FileDescriptor file_;
};

} // namespace platform
