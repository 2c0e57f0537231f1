#include "platform/SessionBus.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>

namespace platform {

bool isOnSessionBus(const QString& name) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    return bus.isConnected() && bus.interface()->isServiceRegistered(name).value();
}

} // namespace platform
