#pragma once

#include <QDBusConnection>

namespace platform {

/// The session bus. Not connected if there is none, or if it has not answered within 2 s: Qt would
/// wait for such a bus without limit. Tried again when its address changes. Main thread only.
QDBusConnection sessionBus();

/// The system bus, likewise; tried once.
QDBusConnection systemBus();

} // namespace platform
