#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QString>

#include <functional>
#include <optional>

namespace platform {

/// Tracks the owner of a name on a bus, without ever waiting for the bus; it lags behind by one
/// message at most. Main thread only.
class BusNameOwner {
  public:
    /// `changed`, which may be null, is called from the event loop with the unique name of the
    /// owner, empty for none, when it becomes known and after each change. Exceptions are reported
    /// (ExceptionReport). On a bus that is not connected there is no owner.
    BusNameOwner(const QDBusConnection& bus, const QString& name,
                 std::function<void(const QString& owner)> changed = nullptr);
    BusNameOwner(const BusNameOwner&) = delete;
    BusNameOwner& operator=(const BusNameOwner&) = delete;

    /// Empty: no owner; nothing: not known yet.
    [[nodiscard]] const std::optional<QString>& owner() const noexcept { return owner_; }

    /// Whether it is known to have an owner.
    [[nodiscard]] bool isOwned() const noexcept { return owner_ && !owner_->isEmpty(); }

  private:
    void set(const QString& owner);

    const std::function<void(const QString& owner)> changed_;
    std::optional<QDBusServiceWatcher> watcher_; // owns the question that is under way
    std::optional<QString> owner_;
};

} // namespace platform
