#pragma once

#include "platform/bus/BusNameOwner.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class QDBusPendingCallWatcher;

/// Registers the icon with the desktop's watcher of tray icons, anew for each watcher and each host
/// that comes, and knows whether a host shows it. Without a watcher it waits for one. Never blocks.
/// Main thread only.
class TrayRegistration final : public QObject {
    Q_OBJECT

  public:
    /// `changed` is called from the event loop when isShown() has changed.
    TrayRegistration(const QDBusConnection& bus, std::function<void()> changed);

    /// Whether a watcher has taken the icon, and has a host that shows icons.
    [[nodiscard]] bool isShown() const noexcept { return isRegistered_ && hasHost_; }

    /// The kernel's name of the watcher's process, which hosts live in or beside; empty if it is
    /// not known.
    [[nodiscard]] const QString& watcherProcess() const noexcept { return process_; }

  private Q_SLOTS:
    void hostRegistered(const QDBusMessage& message);
    void hostUnregistered(const QDBusMessage& message);

  private:
    void watcherChanged(const QString& owner);
    void registerItem();
    void askForHost();
    void askForProcess();
    void ask(const QDBusMessage& call, std::function<void(const QDBusMessage&)> answered);
    void set(bool& fact, bool value);

    QDBusConnection bus_;
    const std::function<void()> changed_;
    QString owner_;
    QString process_;
    bool isRegistered_ = false;
    bool hasHost_ = false;
    std::unique_ptr<QObject> calls_; // owns those under way, all to one watcher
    platform::BusNameOwner watcher_; // after all that it may call
};
