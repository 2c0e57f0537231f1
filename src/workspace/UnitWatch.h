#pragma once

#include <QDBusConnection>

#include <functional>
#include <memory>

/// Reports when the systemd manager on a bus, which on the session bus is the user manager, starts
/// or ends a scope or a service, which may be an application. Does nothing on a bus without a
/// manager, and starts again with a manager that appears later. Never waits for the bus. Main
/// thread only.
class UnitWatch {
  public:
    /// `changed` may be called many times in a burst; before a new unit's processes run, or after.
    UnitWatch(std::function<void()> changed, const QDBusConnection& bus);
    ~UnitWatch();
    UnitWatch(const UnitWatch&) = delete;
    UnitWatch& operator=(const UnitWatch&) = delete;

    /// Whether a manager has accepted the subscription.
    [[nodiscard]] bool isListening() const noexcept;

  private:
    class Receiver;

    std::unique_ptr<Receiver> receiver_; // null without a bus
};
