#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QMap>
#include <QObject>
#include <QVariant>

class QDBusServiceWatcher;

namespace platform {

/// What a person has set for the whole desktop, as far as the desktop portal tells of it. Asked
/// without waiting, and followed. Knows nothing until the desktop has answered, and where there is
/// no portal. The main thread only.
class DesktopSettings final : public QObject {
    Q_OBJECT

  public:
    /// On the session bus; made on first use, never destroyed.
    static DesktopSettings& shared();

    explicit DesktopSettings(QDBusConnection bus);
    ~DesktopSettings() override;

    /// Of a group such as "org.gnome.desktop.interface"; not valid when it is not known.
    QVariant value(const QString& group, const QString& key) const;

  Q_SIGNALS:
    /// After one or several values have become known or others.
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
