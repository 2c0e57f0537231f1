#pragma once

#include "support/PrivateFolder.h"

namespace support {

/// Cuts a test program off from the machine it runs on: home, XDG folders, temporary files and
/// sockets lie in a folder of its own, which goes away with the object; no session bus, display or
/// audio server is known; the locale is C.UTF-8 and Qt draws off screen. main() makes one before
/// anything else, while the process has a single thread. HOME is the folder itself.
class TestEnvironment {
  public:
    TestEnvironment();

  private:
    const PrivateFolder folder_;
};

} // namespace support
