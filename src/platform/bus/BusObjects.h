#pragma once

#include <QDBusMessage>
#include <QString>

namespace platform {

/// The objects that a program exports on the session bus at and below its own path, besides those
/// of SingleInstance. Called on the main thread from the event loop, for callers of our own user
/// only.
class BusObjects {
  public:
    BusObjects() = default;
    virtual ~BusObjects() = default;
    BusObjects(const BusObjects&) = delete;
    BusObjects& operator=(const BusObjects&) = delete;

    /// The interfaces and child nodes of the object at `path`, as XML inside its <node>; empty if
    /// there is none.
    [[nodiscard]] virtual QString introspect(const QString& path) const = 0;

    /// Handles a call and returns the reply or error to send.
    virtual QDBusMessage answer(const QDBusMessage& call) = 0;
};

} // namespace platform
