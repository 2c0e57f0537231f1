#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QMap>
#include <QObject>
#include <QVariant>

class QDBusServiceWatcher;

namespace platform {

/// The desktop-wide settings from the desktop portal, requested without waiting and kept up to
/// date. Empty until the desktop has replied, and without a portal. Main thread only.
class DesktopSettings final : public QObject {
    Q_OBJECT

  public:
    /// On the session bus; created on first use, never destroyed.
    static DesktopSettings& shared();

    explicit DesktopSettings(QDBusConnection bus);
    ~DesktopSettings() override;

    /// A value of a group such as "org.gnome.desktop.interface"; invalid if unknown.
    QVariant value(const QString& group, const QString& key) const;

  Q_SIGNALS:
    /// Emitted after one or several values have become known or changed.
    void changed();

  private Q_SLOTS:
    void settingChanged(const QDBusMessage& signal);

  private:
    using Groups = QMap<QString, QVariantMap>;

    void ask();
    bool take(const QString& group, const QString& key, QVariant value);

    QDBusConnection bus_;
    QDBusServiceWatcher* watcher_ = nullptr; // null without a bus
    Groups groups_;
};

} // namespace platform
