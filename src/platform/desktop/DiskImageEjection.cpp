#include "platform/desktop/DiskImageEjection.h"

#include "platform/base/ExceptionReport.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QVariantMap>

#include <unistd.h>
#include <utility>

namespace platform {

namespace {

using Answered = std::function<void(const QDBusMessage& reply)>;

constexpr int longestAnswer = 30000; // ms

QDBusMessage callOf(const std::string& device, const char* interface, const char* method) {
    return QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.UDisks2"),
        QStringLiteral("/org/freedesktop/UDisks2/block_devices/") + QString::fromStdString(device),
        QLatin1String(interface), QLatin1String(method));
}

void send(const QDBusConnection& bus, const QDBusMessage& message, Answered answered) {
    auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(message, longestAnswer));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [watcher, answered = std::move(answered)] {
                         watcher->deleteLater();
                         guarded(kExceptionInNotification, [&] { answered(watcher->reply()); });
                     });
}

QVariantMap withoutQuestions() {
    return {{QStringLiteral("auth.no_user_interaction"), true}};
}

bool isOurs(const QDBusMessage& reply) {
    const auto user = reply.arguments().value(0).value<QDBusVariant>().variant();
    return reply.type() == QDBusMessage::ReplyMessage && user.isValid() &&
           user.toUInt() == ::getuid();
}

} // namespace

void ejectDiskImage(const QDBusConnection& systemBus, const DiskImage& image,
                    const std::function<void(bool isUnmounted)>& over) {
    if (!systemBus.isConnected()) {
        over(false);
        return;
    }
    auto question = callOf(image.device, "org.freedesktop.DBus.Properties", "Get");
    question << QStringLiteral("org.freedesktop.UDisks2.Loop") << QStringLiteral("SetupByUID");
    send(systemBus, question, [systemBus, image, over](const QDBusMessage& owner) {
        if (!isOurs(owner)) {
            over(false);
            return;
        }
        auto unmount = callOf(image.volume, "org.freedesktop.UDisks2.Filesystem", "Unmount");
        unmount << withoutQuestions();
        send(systemBus, unmount, [systemBus, image, over](const QDBusMessage& unmounted) {
            if (unmounted.type() != QDBusMessage::ReplyMessage) {
                over(false);
                return;
            }
            auto remove = callOf(image.device, "org.freedesktop.UDisks2.Loop", "Delete");
            remove << withoutQuestions(); // the device may have gone by itself
            send(systemBus, remove, [over](const QDBusMessage&) { over(true); });
        });
    });
}

} // namespace platform
