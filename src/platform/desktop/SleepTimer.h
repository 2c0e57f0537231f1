#pragma once

#include <QDBusConnection>

namespace platform {

/// Minutes without activity after which the machine goes to sleep by itself, as logind is set; a
/// part of a minute counts as one. 0 when it never does, or when there is no bus or no logind to
/// ask. Waits for an answer for a second at most. Any thread.
unsigned machineSleepTimer(const QDBusConnection& bus = QDBusConnection::systemBus());

} // namespace platform
