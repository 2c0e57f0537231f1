#pragma once

#include <string>

namespace platform {

/// $XDG_RUNTIME_DIR, the folder of this login session for sockets, which only its user can enter;
/// empty when there is none. Any thread, as long as none changes the environment.
std::string runtimeDirectory();

/// The folder for temporary files that survives a restart and that all users share.
std::string sharedTemporaryDirectory();

} // namespace platform
