#pragma once

#include "support/BusConnection.h"

#include <QDBusContext>
#include <QDBusObjectPath>
#include <QObject>
#include <QStringList>

namespace support {

/// A unit of SystemdManager. States are called as systemd calls them: "loaded" and "inactive".
class SystemdUnit : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.systemd1.Unit")
    Q_PROPERTY(QString LoadState MEMBER load)
    Q_PROPERTY(QString ActiveState MEMBER activity)
    Q_PROPERTY(bool NeedDaemonReload MEMBER isOutdated)

  public:
    QString load = "not-found";
    QString activity = "inactive";
    bool isOutdated = false;
};

/// Stands for systemd's manager of a session on a bus, under a connection of its own: takes
/// subscriptions, tells of units when a test says so, and has one unit, for which every name
/// stands.
class SystemdManager : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.systemd1.Manager")

  public:
    explicit SystemdManager(const QString& address) : bus_(address.toStdString()) {
        bus_->registerObject(path(), this, QDBusConnection::ExportAllSlots);
        bus_->registerObject(path() + "/unit/x", &unit, QDBusConnection::ExportAllProperties);
        bus_->registerService("org.freedesktop.systemd1");
    }

    SystemdUnit unit;

    /// "start NAME", "reset NAME", "stop NAME", "enable FILE", "disable NAME" and "reload".
    const QStringList& calls() const noexcept { return calls_; }

    int subscribers() const noexcept { return subscribers_; }

    void say(const QString& signal, const QString& name) { send(bus_, signal, name); }

    /// UnitNew or UnitRemoved, from any connection.
    static void send(BusConnection& bus, const QString& signal, const QString& name) {
        bus.say(path(), "org.freedesktop.systemd1.Manager", signal,
                {name, QVariant::fromValue(QDBusObjectPath(path() + "/unit/x"))});
    }

  public Q_SLOTS:
    void Subscribe() { ++subscribers_; }

    QDBusObjectPath LoadUnit(const QString& /*name*/) {
        return QDBusObjectPath(path() + "/unit/x");
    }

    void ResetFailedUnit(const QString& name) { calls_ += "reset " + name; }

    QDBusObjectPath StartUnit(const QString& name, const QString& /*mode*/) {
        calls_ += "start " + name;
        if (unit.load != "loaded")
            sendErrorReply("org.freedesktop.systemd1.UnitMasked", "Unit " + name + " is masked.");
        return QDBusObjectPath(path() + "/job/1");
    }

    void StopUnit(const QString& name, const QString& /*mode*/) { calls_ += "stop " + name; }

    void EnableUnitFiles(const QStringList& files, bool /*runtime*/, bool /*force*/) {
        calls_ += "enable " + files.join(' ');
        unit.load = "loaded";
    }

    void DisableUnitFiles(const QStringList& names, bool /*runtime*/) {
        calls_ += "disable " + names.join(' ');
        unit.load = "not-found";
    }

    void Reload() { calls_ += "reload"; }

  private:
    static QString path() { return "/org/freedesktop/systemd1"; }

    BusConnection bus_;
    QStringList calls_;
    int subscribers_ = 0;
};

} // namespace support
