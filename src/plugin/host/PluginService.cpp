#include "plugin/host/PluginService.h"

#include "platform/bus/SessionBus.h"
#include "platform/processes/ExceptionReport.h"
#include "platform/processes/SystemLog.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusError>

#include <utility>

PluginService::PluginService(std::function<std::string()> status) : status_(std::move(status)) {
    QDBusConnection bus = platform::sessionBus();
    if (!bus.isConnected())
        return;
    // The object comes first: whoever sees the name may call at once.
    if (bus.registerObject(objectPath(), this,
                           QDBusConnection::ExportScriptableSlots |
                               QDBusConnection::ExportScriptableSignals) &&
        bus.registerService(busName()))
        return;
    platform::systemLog(platform::LogPriority::warning, "Nobody can ask for the status: %s",
                        bus.lastError().isValid() ? qUtf8Printable(bus.lastError().message())
                                                  : "another process has our name on the bus");
}

PluginService::~PluginService() {
    platform::sessionBus().unregisterObject(objectPath()); // the name goes with the connection
}

QString PluginService::Status() const {
    QString text;
    platform::guarded(platform::kExceptionInNotification,
                      [&] { text = QString::fromStdString(status_()); });
    return text;
}
