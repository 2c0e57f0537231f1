#pragma once

#include "support/BusConnection.h"
#include "support/PrivateBus.h"

#include <QMap>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace support {

/// The desktop's portal on a private bus, as far as programs ask it for settings. It serves what
/// has been set with the test's own event loop.
class DesktopPortal final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

  public:
    using Groups = QMap<QString, QVariantMap>;

    /// One that is not `answering` has its name and nothing else.
    explicit DesktopPortal(const PrivateBus& bus, bool answering = true);
    ~DesktopPortal() override;

    void set(const QString& group, const QString& key, const QVariant& value);

    /// Sets it, and tells everybody.
    void change(const QString& group, const QString& key, const QVariant& value);

  public Q_SLOTS:
    QMap<QString, QVariantMap> ReadAll(const QStringList& groups);

  private:
    BusConnection bus_;
    Groups groups_;
};

} // namespace support
