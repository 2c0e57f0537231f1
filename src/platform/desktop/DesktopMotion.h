#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QVariant>

namespace platform {

/// Whether a person wants things to move on the screen, by the desktop's settings
/// (org.gnome.desktop.interface, enable-animations, which the desktop portal tells of many
/// desktops). Asked without waiting, and followed. True until the desktop has answered, and where
/// nobody knows. The main thread only.
class DesktopMotion final : public QObject {
    Q_OBJECT

  public:
    /// On the session bus; made on first use, never destroyed.
    static const DesktopMotion& shared();

    explicit DesktopMotion(QDBusConnection bus);

    bool isWanted() const noexcept { return isWanted_; }

  private Q_SLOTS:
    void settingChanged(const QDBusMessage& signal);

  private:
    void take(QVariant value);

    bool isWanted_ = true;
};

} // namespace platform
