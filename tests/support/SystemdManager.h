#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QObject>
#include <QString>

namespace support {

/// Stands for systemd's manager of a session on a bus, under a connection of its own: takes
/// subscriptions, and tells of units when a test says so.
class SystemdManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.systemd1.Manager")

  public:
    explicit SystemdManager(const QString& address)
        : bus_(QDBusConnection::connectToBus(address, connectionName())) {
        bus_.registerObject(path(), this, QDBusConnection::ExportAllSlots);
        bus_.registerService(QStringLiteral("org.freedesktop.systemd1"));
    }
    ~SystemdManager() override { QDBusConnection::disconnectFromBus(connectionName()); }

    int subscribers() const noexcept { return subscribers_; }

    void say(const QString& signal, const QString& unit) { send(bus_, signal, unit); }

    /// UnitNew or UnitRemoved, from any connection.
    static void send(QDBusConnection bus, const QString& signal, const QString& unit) {
        auto message = QDBusMessage::createSignal(
            path(), QStringLiteral("org.freedesktop.systemd1.Manager"), signal);
        message << unit << QVariant::fromValue(QDBusObjectPath(path() + "/unit/x"));
        bus.send(message);
    }

  public Q_SLOTS:
    void Subscribe() { ++subscribers_; }

  private:
    static QString path() { return QStringLiteral("/org/freedesktop/systemd1"); }
    static QString connectionName() { return QStringLiteral("systemd"); }

    QDBusConnection bus_;
    int subscribers_ = 0;
};

} // namespace support
