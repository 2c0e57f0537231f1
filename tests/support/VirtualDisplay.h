#pragma once

#include "support/ChildProcess.h"
#include "support/ScopedVariable.h"

#include <string>

namespace support {

/// An X server of our own that draws into memory; DISPLAY names it and Qt is told to use it while
/// it lives. The constructor returns when it takes connections and throws std::runtime_error when
/// it does not come up. Make one before the application object.
class VirtualDisplay {
  public:
    /// `size` is that of the screen, in pixels: "WIDTHxHEIGHT".
    explicit VirtualDisplay(const std::string& size = "1280x800");

    /// Of the server.
    pid_t pid() const noexcept { return server_.pid(); }

  private:
    ChildProcess server_;
    const ScopedVariable display_;
    const ScopedVariable qtPlatform_;
};

} // namespace support
