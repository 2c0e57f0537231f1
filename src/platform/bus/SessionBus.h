#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class QDBusServiceWatcher;

namespace platform {

/// The session bus. Not connected when there is none, or when it has not answered within 2 s: Qt
/// would wait for such a bus without end. Asked anew when its address changes. Main thread only.
QDBusConnection sessionBus();

/// Likewise the system bus, which is asked once.
QDBusConnection systemBus();

/// Knows whether a program owns a name on the session bus, without ever waiting for the bus: what
/// has become known is up to date but for the way of a message. Main thread only.
class BusNameWatch {
  public:
    /// `changed`, which may be null, is called from the event loop when the answer may have
    /// changed. Exceptions are reported (ExceptionReport).
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
