#include "app/HelperPresence.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace {

const QString helperName = QStringLiteral("com.quarnel.TonvaleHelper");
const QString path = QStringLiteral("/com/quarnel/TonvaleHelper");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString shown = QStringLiteral("Shown");

} // namespace

HelperPresence::HelperPresence(const QDBusConnection& bus)
    : bus_(bus), owner_(bus, helperName, [this](const QString& owner) { ownerChanged(owner); }) {
    // With a name, the toolkit would wait for its owner, and abort on a bus that has just ended.
    bus_.connect(QString(), path, propertiesInterface, QStringLiteral("PropertiesChanged"), this,
                 SLOT(propertiesChanged(QString, QVariantMap, QStringList, QDBusMessage)));
}

void HelperPresence::ownerChanged(const QString& owner) {
    calls_ = std::make_unique<QObject>();
    isShown_ = false;
    if (owner.isEmpty())
        return;
    auto call = QDBusMessage::createMethodCall(helperName, path, propertiesInterface,
                                               QStringLiteral("Get"));
    call.setAutoStartService(false);
    call.setArguments({helperName, shown});
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), calls_.get());
    connect(watcher, &QDBusPendingCallWatcher::finished, calls_.get(), [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        isShown_ = reply.isValid() && reply.value().variant().toBool();
    });
}

void HelperPresence::propertiesChanged(const QString& interface, const QVariantMap& changed,
                                       const QStringList& /*invalidated*/,
                                       const QDBusMessage& message) {
    if (interface == helperName && message.service() == owner_.owner() && changed.contains(shown))
        isShown_ = changed.value(shown).toBool();
}
