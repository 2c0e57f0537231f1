#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class QDBusServiceWatcher;

namespace platform {

/// The session bus. Not connected if there is none, or if it has not answered within 2 s: Qt would
/// wait for such a bus without limit. Tried again when its address changes. Main thread only.
QDBusConnection sessionBus();

/// The system bus, likewise; tried once.
QDBusConnection systemBus();

/// Tracks whether a name on the session bus is owned, without ever waiting for the bus; it lags
/// behind by one message at most. Main thread only.
class BusNameWatch {
  public:
    /// `changed`, which may be null, is called from the event loop when isOwned() may have changed.
    /// Exceptions are reported (ExceptionReport).
    explicit BusNameWatch(const QString& name, std::function<void()> changed = nullptr);
    ~BusNameWatch();
    BusNameWatch(const BusNameWatch&) = delete;
    BusNameWatch& operator=(const BusNameWatch&) = delete;

    bool isOwned() const noexcept { return isOwned_; }

  private:
    void setOwned(bool isOwned);

    const QString name_;
    const std::function<void()> changed_;
    std::unique_ptr<QDBusServiceWatcher> watcher_; // null without a bus
    bool isOwned_ = false;
};

} // namespace platform
