#include "support/PrivateBus.h"

#include <stdexcept>

namespace support {

PrivateBus::PrivateBus()
    : address_("unix:path=" + (folder_.path() / "bus").string())
    , variable_("DBUS_SESSION_BUS_ADDRESS", address_)
    , daemon_({"dbus-daemon", "--nofork",
               std::string("--config-file=").append(TONVALE_SESSION_CONFIG).append("/bus.conf"),
               "--address=" + address_, "--print-address"}) {
    // The daemon prints its address when it listens.
    const auto decided = [this] {
        return daemon_.output().find(",guid=") != std::string::npos || !daemon_.isRunning();
    };
    if (!waitUntil(decided) || !daemon_.isRunning())
        throw std::runtime_error("dbus-daemon did not come up: " + daemon_.output());
}

} // namespace support
