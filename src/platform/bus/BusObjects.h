#pragma once

#include <QDBusMessage>
#include <QString>

namespace platform {

/// The objects that a program shows on the session bus at and below its own path, beside what
/// SingleInstance has there. Called on the main thread from the event loop, for callers of our own
/// user only.
class BusObjects {
  public:
    BusObjects() = default;
    virtual ~BusObjects() = default;
    BusObjects(const BusObjects&) = delete;
    BusObjects& operator=(const BusObjects&) = delete;

    /// The interfaces and child nodes of the object at `path` as they stand inside its <node>;
    /// empty when there is none.
    virtual QString introspect(const QString& path) const = 0;

    /// What is to be sent for a call: a reply or an error.
    virtual QDBusMessage answer(const QDBusMessage& call) = 0;
};

} // namespace platform
