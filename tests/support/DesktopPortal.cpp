#include "support/DesktopPortal.h"

#include <QDBusMetaType>
#include <QDBusVariant>

namespace support {

namespace {

const QString path = "/org/freedesktop/portal/desktop";

} // namespace

DesktopPortal::DesktopPortal(const PrivateBus& bus, bool answering) : bus_(bus.address()) {
    qDBusRegisterMetaType<Groups>();
    if (answering)
        bus_->registerObject(path, this, QDBusConnection::ExportAllSlots);
    bus_->registerService("org.freedesktop.portal.Desktop");
}

/// Before Qt's own thread closes the connection, which would still ask this object then.
DesktopPortal::~DesktopPortal() {
    bus_->unregisterObject(path);
}

void DesktopPortal::set(const QString& group, const QString& key, const QVariant& value) {
    groups_[group][key] = value;
}

void DesktopPortal::change(const QString& group, const QString& key, const QVariant& value) {
    set(group, key, value);
    bus_.say(path, "org.freedesktop.portal.Settings", "SettingChanged",
             {group, key, QVariant::fromValue(QDBusVariant(value))});
}

QMap<QString, QVariantMap> DesktopPortal::ReadAll(const QStringList& groups) {
    Groups answer;
    for (const QString& group : groups) {
        if (groups_.contains(group))
            answer[group] = groups_[group];
    }
    return answer;
}

} // namespace support
