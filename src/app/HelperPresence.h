#pragma once

#include "platform/bus/BusNameOwner.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <memory>

/// Whether the helper's icon can be seen, according to the helper: it runs, and a host of the
/// desktop's tray shows it. Lags behind by some messages at most, and never waits for the bus. Main
/// thread only.
class HelperPresence final : public QObject {
    Q_OBJECT

  public:
    explicit HelperPresence(const QDBusConnection& bus);

    [[nodiscard]] bool isShown() const noexcept { return isShown_; }

    /// Whether `caller`, a unique name, is the helper.
    [[nodiscard]] bool isHelper(const QString& caller) const { return owner_.owner() == caller; }

  private Q_SLOTS:
    void propertiesChanged(const QString& interface, const QVariantMap& changed,
                           const QStringList& invalidated, const QDBusMessage& message);

  private:
    void ownerChanged(const QString& owner);

    QDBusConnection bus_;
    bool isShown_ = false;
    std::unique_ptr<QObject> calls_; // owns the question to the present owner
    platform::BusNameOwner owner_;   // after all that it may call
};
