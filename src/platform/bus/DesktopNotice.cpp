#include "platform/bus/DesktopNotice.h"

#include <QDBusMessage>
#include <QStringList>
#include <QVariantMap>

namespace platform {

void postDesktopNotice(const QDBusConnection& bus, const QString& title, const QString& text) {
    auto call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.Notifications"),
                                               QStringLiteral("/org/freedesktop/Notifications"),
                                               QStringLiteral("org.freedesktop.Notifications"),
                                               QStringLiteral("Notify"));
    constexpr uint replacesNone = 0;
    constexpr int usualTime = -1;
    // The body may hold markup.
    call.setArguments({QStringLiteral("Tonvale"), replacesNone,
                       QStringLiteral("com.quarnel.Tonvale"), title, text.toHtmlEscaped(),
                       QStringList(), QVariantMap(), usualTime});
    bus.send(call);
}

} // namespace platform
