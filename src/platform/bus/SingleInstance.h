#pragma once

#include "platform/files/SessionLock.h"

#include <QString>

#include <functional>
#include <memory>

namespace platform {

class BusObjects;

/// Ensures that a program runs once in a login session. The first instance holds a lock file in the
/// runtime directory, and a name on the session bus, through which it is notified of further starts
/// (with the desktop's interface for that, org.freedesktop.Application). Without a session bus it
/// is not notified; without bus and runtime directory every start counts as the first. Only callers
/// of this user are accepted. Main thread only.
class SingleInstance {
  public:
    /// Called with the activation token of the second start, which permits a window to come to the
    /// front; empty if the desktop gave none.
    using Activated = std::function<void(const QString& token)>;

    /// Called with the name of an action that the desktop or another program wants, such as
    /// "preferences", and the token as above. Returns whether there is such an action.
    using Acted = std::function<bool(const QString& action, const QString& token)>;

    /// `name` is the program's bus name, "com.quarnel.Tonvale". Null if another instance runs,
    /// which has been asked to show itself, or for the action of that name. Waits for an instance
    /// that is ending, 3 s at most.
    [[nodiscard]] static std::unique_ptr<SingleInstance> acquire(const QString& name,
                                                                 const QString& action = {});
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// What has arrived before both are set is handled then.
    void onActivation(Activated activated);

    /// An action that nobody takes counts as an activation.
    void onAction(Acted acted);

    /// Lets `objects` handle calls at and below the program's object path, the bus name with
    /// slashes, including calls that arrived before. `objects` must outlive this or be removed with
    /// null. Does nothing without a session bus.
    void serve(BusObjects* objects);

  private:
    class Service;
    enum class Outcome { acquired, handedOver, otherIsSilent };

    explicit SingleInstance(const QString& name);
    Outcome tryOnce(const QString& name, const QString& action);

    SessionLock lock_;
    std::unique_ptr<Service> service_; // null without a session bus
};

} // namespace platform
