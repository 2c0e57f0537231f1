#include "support/VirtualDisplay.h"

#include "support/WaitUntil.h"

#include <stdexcept>

namespace support {

namespace {

/// The server picks a free display and prints its number when it takes connections.
std::string displayOf(ChildProcess& server) {
    if (!waitUntil([&] { return server.output().ends_with('\n') || !server.isRunning(); }) ||
        !server.isRunning())
        throw std::runtime_error("Xvfb does not come up");
    const std::string number = server.output();
    return ":" + number.substr(0, number.find('\n'));
}

} // namespace

VirtualDisplay::VirtualDisplay(const std::string& size)
    : server_({"Xvfb", "-displayfd", "1", "-screen", "0", size + "x24", "-nolisten", "tcp"},
              {.environment = {}, .keepErrors = false})
    , display_("DISPLAY", displayOf(server_))
    , qtPlatform_("QT_QPA_PLATFORM", "xcb") {}

} // namespace support
