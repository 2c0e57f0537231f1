#pragma once

#include "support/BusConnection.h"

#include <QDBusObjectPath>
#include <QObject>

namespace support {

/// Stands for systemd's manager of a session on a bus, under a connection of its own: takes
/// subscriptions, and tells of units when a test says so.
class SystemdManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.systemd1.Manager")

  public:
    explicit SystemdManager(const QString& address) : bus_(address.toStdString()) {
        bus_->registerObject(path(), this, QDBusConnection::ExportAllSlots);
        bus_->registerService("org.freedesktop.systemd1");
    }

    int subscribers() const noexcept { return subscribers_; }

    void say(const QString& signal, const QString& unit) { send(bus_, signal, unit); }

    /// UnitNew or UnitRemoved, from any connection.
    static void send(BusConnection& bus, const QString& signal, const QString& unit) {
        bus.say(path(), "org.freedesktop.systemd1.Manager", signal,
                {unit, QVariant::fromValue(QDBusObjectPath(path() + "/unit/x"))});
    }

  public Q_SLOTS:
    void Subscribe() { ++subscribers_; }

  private:
    static QString path() { return "/org/freedesktop/systemd1"; }

    BusConnection bus_;
    int subscribers_ = 0;
};

} // namespace support
