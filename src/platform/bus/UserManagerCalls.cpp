#include "platform/bus/UserManagerCalls.h"

#include "platform/base/ExceptionReport.h"

#include <QDBusError>
#include <QDBusPendingCallWatcher>

#include <utility>

namespace platform {

namespace {

constexpr int longestAnswer = 3000; // ms

} // namespace

QDBusMessage UserManagerCalls::call(const QString& path, const QString& interface,
                                    const QString& method, const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.systemd1"), path, interface, method);
    message.setAutoStartService(false);
    message.setArguments(arguments);
    return message;
}

QDBusMessage UserManagerCalls::managerCall(const QString& method, const QVariantList& arguments) {
    return call(QStringLiteral("/org/freedesktop/systemd1"),
                QStringLiteral("org.freedesktop.systemd1.Manager"), method, arguments);
}

/// On a bus that is not there, the toolkit's calls never end.
void UserManagerCalls::send(QDBusConnection& bus, const QDBusMessage& message, QObject& owner,
                            std::function<void(const QDBusMessage&)> answer) {
    if (!bus.isConnected()) {
        const auto refuse = [answer = std::move(answer)] {
            answer(QDBusMessage::createError(QDBusError::Disconnected,
                                             QStringLiteral("There is no session bus.")));
        };
        QMetaObject::invokeMethod(&owner, refuse, Qt::QueuedConnection);
        return;
    }
    auto* const watcher =
        new QDBusPendingCallWatcher(bus.asyncCall(message, longestAnswer), &owner);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [watcher, answer = std::move(answer)] {
                         watcher->deleteLater();
                         guarded(kExceptionInNotification, [&] { answer(watcher->reply()); });
                     });
}

} // namespace platform
