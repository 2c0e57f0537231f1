#pragma once

#include "support/WaitUntil.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>

#include <string>

namespace support {

/// A program's own connection to a bus, which ends with the object.
class BusConnection {
  public:
    explicit BusConnection(const std::string& address)
        : bus_(QDBusConnection::connectToBus(QString::fromStdString(address), name_)) {}
    ~BusConnection() { QDBusConnection::disconnectFromBus(name_); }
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    const QDBusConnection& operator*() const { return bus_; }
    const QDBusConnection* operator->() const { return &bus_; }
    QDBusConnection& operator*() { return bus_; }
    QDBusConnection* operator->() { return &bus_; }

    /// Sends a signal, or fails to.
    bool say(const QString& path, const QString& interface, const QString& member,
             const QVariantList& arguments = {}) {
        auto signal = QDBusMessage::createSignal(path, interface, member);
        signal.setArguments(arguments);
        return bus_.send(signal);
    }

    /// Serves everything that has been sent to this connection until now.
    void settle() {
        const QString bus = "org.freedesktop.DBus";
        bus_.call(QDBusMessage::createMethodCall(bus, "/", bus, "GetId"));
        serveEvents();
    }

  private:
    static inline int count_ = 0;
    const QString name_ = QStringLiteral("test %1").arg(++count_);
    QDBusConnection bus_;
};

} // namespace support
