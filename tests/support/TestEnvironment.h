#pragma once

#include "support/PrivateFolder.h"

#include <filesystem>

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

/// The plug-in of the build counts as installed in a local library, which has nothing yet. Without
/// that, the application would install it at each start.
void linkInstalledPlugin(const std::filesystem::path& library);

} // namespace support
