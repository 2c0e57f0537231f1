#pragma once

#include <QString>

#include <functional>
#include <memory>

namespace platform {

/// Notifications between the programs of one login session: signals on the session bus. The name
/// up to its last dot is the D-Bus interface, the rest the member, and the object path is the
/// interface with slashes: "com.quarnel.mivo.guiDidLaunch" is the signal guiDidLaunch of the
/// interface com.quarnel.mivo at /com/quarnel/mivo, which any program can watch or send.
///
/// Main thread only. Without a session bus nothing is sent or received.

/// Sends the notification, without arguments. False, with one line in the system log, if there is
/// no bus or the name is invalid.
bool postDistributedNotification(const QString& name);

/// Calls a handler on the main thread whenever the notification arrives, from this process too,
/// until it is destroyed. An exception of the handler is reported (ExceptionReport).
class DistributedNotificationObserver {
  public:
    DistributedNotificationObserver(const QString& name, std::function<void()> handler);
    ~DistributedNotificationObserver();
    DistributedNotificationObserver(const DistributedNotificationObserver&) = delete;
    DistributedNotificationObserver& operator=(const DistributedNotificationObserver&) = delete;

    /// False if there is no session bus, so that nothing will ever arrive.
    [[nodiscard]] bool isActive() const noexcept;

  private:
    class Receiver;
    std::unique_ptr<Receiver> receiver_;
};

} // namespace platform
