#include "platform/Directories.h"

#include <cstdlib>

namespace platform {

std::string runtimeDirectory() {
    const char* const folder = std::getenv("XDG_RUNTIME_DIR");
    return folder != nullptr ? folder : "";
}

std::string sharedTemporaryDirectory() {
    return "/var/tmp";
}

} // namespace platform
