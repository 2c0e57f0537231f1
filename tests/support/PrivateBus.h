#pragma once

#include "support/ChildProcess.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"

namespace support {

/// A session bus of our own that starts no services; DBUS_SESSION_BUS_ADDRESS names it while it
/// lives. The constructor returns when it takes connections and throws when it does not come up.
///
/// Qt opens its session bus once in a process: a Qt test program makes one of these, before
/// anything uses the bus, and keeps it.
class PrivateBus {
  public:
    PrivateBus();

    const std::string& address() const noexcept { return address_; }

  private:
    const PrivateFolder folder_;
    const std::string address_;
    const ScopedVariable variable_;
    ChildProcess daemon_;
};

} // namespace support
