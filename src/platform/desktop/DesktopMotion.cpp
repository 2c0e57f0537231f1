#include "platform/desktop/DesktopMotion.h"

#include "platform/bus/SessionBus.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace platform {

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString settings = QStringLiteral("org.gnome.desktop.interface");
const QString animations = QStringLiteral("enable-animations");

} // namespace

const DesktopMotion& DesktopMotion::shared() {
    static const auto* const motion = new DesktopMotion(sessionBus());
    return *motion;
}

DesktopMotion::DesktopMotion(QDBusConnection bus) {
    if (!bus.isConnected())
        return;
    bus.connect(service, path, interface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QDBusMessage)));
    QDBusMessage question =
        QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
    question << settings << animations;
    question.setAutoStartService(false); // not for this
    auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QDBusVariant> answer = *watcher;
        if (answer.isValid())
            take(answer.value().variant());
        watcher->deleteLater();
    });
}

void DesktopMotion::settingChanged(const QDBusMessage& signal) {
    const QVariantList arguments = signal.arguments();
    if (arguments.size() == 3 && arguments[0] == settings && arguments[1] == animations)
        take(arguments[2]);
}

/// The portal wraps an answer in one variant more than a signal.
void DesktopMotion::take(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    if (value.typeId() == QMetaType::Bool)
        isWanted_ = value.toBool();
}

} // namespace platform
