#pragma once

#include <QDBusConnection>

namespace platform {

/// Minutes of inactivity after which logind suspends the machine, rounded up. 0 if it never does,
/// or without a bus or logind. Waits for a reply for at most a second. Any thread.
unsigned machineSleepTimer(const QDBusConnection& bus = QDBusConnection::systemBus());

} // namespace platform
