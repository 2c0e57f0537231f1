#pragma once

#include "platform/files/SessionLock.h"

#include <QString>

#include <functional>
#include <memory>

namespace platform {

class BusObjects;

/// Sees to it that a program runs once in a login session. The first one holds a lock file in the
/// runtime directory, and a name on the session bus, by which it is told when another is started
/// (the desktop's own interface for that, org.freedesktop.Application). Without a session bus the
/// other start is not told to anybody; without bus and runtime directory every start is the first.
/// Whoever calls there must be of this user. Main thread only.
class SingleInstance {
  public:
    /// Called with the activation token of the second start, which lets a window come to the front;
    /// empty when the desktop gave none.
    using Activated = std::function<void(const QString& token)>;

    /// `name` is the program's bus name, "com.quarnel.Tonvale". Null when another one runs; that
    /// has been asked to show itself. One that is ending is waited for, 3 s at most.
    static std::unique_ptr<SingleInstance> acquire(const QString& name);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    void onActivation(Activated activated);

    /// Has calls at and below the program's object path, the bus name with slashes, answered by
    /// `objects`, which must outlive this or be taken away with null; so are those that came before
    /// the first. Does nothing without a session bus.
    void serve(BusObjects* objects);

  private:
    class Service;
    enum class Outcome { acquired, handedOver, otherIsSilent };

    explicit SingleInstance(const QString& name);
    Outcome tryOnce(const QString& name);

    SessionLock lock_;
    std::unique_ptr<Service> service_; // null without a session bus
};

} // namespace platform
