#include "support/DesktopPortal.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>

namespace support {

namespace {

const QString path = QStringLiteral("/org/freedesktop/portal/desktop");

} // namespace

DesktopPortal::DesktopPortal(const PrivateBus& bus, bool answering)
    : connectionName_(QStringLiteral("portal %1").arg(reinterpret_cast<quintptr>(this)))
    , bus_(QDBusConnection::connectToBus(QString::fromStdString(bus.address()), connectionName_)) {
    qDBusRegisterMetaType<Groups>();
    if (answering)
        bus_.registerObject(path, this, QDBusConnection::ExportAllSlots);
    bus_.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
}

DesktopPortal::~DesktopPortal() {
    QDBusConnection::disconnectFromBus(connectionName_);
}

void DesktopPortal::set(const QString& group, const QString& key, const QVariant& value) {
    groups_[group][key] = value;
}

void DesktopPortal::change(const QString& group, const QString& key, const QVariant& value) {
    set(group, key, value);
    auto signal = QDBusMessage::createSignal(
        path, QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("SettingChanged"));
    signal << group << key << QVariant::fromValue(QDBusVariant(value));
    bus_.send(signal);
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
