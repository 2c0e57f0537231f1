#pragma once

#include <QDBusConnection>

#include <functional>
#include <memory>

/// Tells when the systemd manager of a bus, on the session bus the person's own, starts or ends
/// something that may be an application: a scope or a service. Silent on a bus without one. Begins
/// anew with a manager that comes later. Never waits for the bus. The main thread only.
class UnitWatch {
  public:
    /// `changed` may be called many times in a burst; before a new unit's processes run, or after.
    UnitWatch(std::function<void()> changed, const QDBusConnection& bus);
    ~UnitWatch();
    UnitWatch(const UnitWatch&) = delete;
    UnitWatch& operator=(const UnitWatch&) = delete;

    /// Whether a manager has said that it will tell.
    bool isListening() const noexcept;

  private:
    class Receiver;

    std::unique_ptr<Receiver> receiver_; // null without a bus
};
