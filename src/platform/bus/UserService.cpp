#include "platform/bus/UserService.h"

#include "platform/base/ExceptionReport.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

#include <utility>

namespace platform {

namespace {

using Answer = std::function<void(const QDBusMessage&)>;

constexpr int longestAnswer = 3000; // ms; a manager that hangs counts as none

QDBusMessage callOf(const QString& path, const QString& interface, const QString& method,
                    const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.systemd1"), path, interface, method);
    message.setAutoStartService(false);
    message.setArguments(arguments);
    return message;
}

QDBusMessage managerCall(const QString& method, const QVariantList& arguments) {
    return callOf(QStringLiteral("/org/freedesktop/systemd1"),
                  QStringLiteral("org.freedesktop.systemd1.Manager"), method, arguments);
}

/// On a bus that is not there, the toolkit's calls never end.
void send(QDBusConnection& bus, const QDBusMessage& message, QObject& owner, Answer answer) {
    if (!bus.isConnected()) {
        const auto refuse = [answer = std::move(answer)] {
            answer(QDBusMessage::createError(QDBusError::Disconnected,
                                             QStringLiteral("There is no session bus.")));
        };
        QMetaObject::invokeMethod(&owner, refuse, Qt::QueuedConnection);
        return;
    }
    auto* const call = new QDBusPendingCallWatcher(bus.asyncCall(message, longestAnswer), &owner);
    QObject::connect(call, &QDBusPendingCallWatcher::finished, call,
                     [call, answer = std::move(answer)] {
                         call->deleteLater();
                         guarded(kExceptionInNotification, [&] { answer(call->reply()); });
                     });
}

UserService::State stateOf(const QDBusMessage& properties) {
    const QDBusPendingReply<QVariantMap> reply(properties);
    if (!reply.isValid())
        return {};
    UserService::State state;
    state.load = reply.value().value(QStringLiteral("LoadState")).toString();
    state.activity = reply.value().value(QStringLiteral("ActiveState")).toString();
    state.isInstalled = !state.load.isEmpty() && state.load != QLatin1String("not-found");
    return state;
}

} // namespace

UserService::UserService(QString name, const QDBusConnection& bus)
    : name_(std::move(name)), bus_(bus) {}

void UserService::ask(std::function<void(const State&)> answer) {
    const auto withUnit = [this, answer = std::move(answer)](const QDBusMessage& message) {
        const QDBusPendingReply<QDBusObjectPath> unit(message);
        if (!unit.isValid()) {
            answer({});
            return;
        }
        const auto question =
            callOf(unit.value().path(), QStringLiteral("org.freedesktop.DBus.Properties"),
                   QStringLiteral("GetAll"), {QStringLiteral("org.freedesktop.systemd1.Unit")});
        send(bus_, question, *calls_,
             [answer](const QDBusMessage& properties) { answer(stateOf(properties)); });
    };
    send(bus_, managerCall(QStringLiteral("LoadUnit"), {name_}), *calls_, withUnit);
}

void UserService::start(std::function<void(const QString&)> answer) {
    bus_.send(managerCall(QStringLiteral("ResetFailedUnit"), {name_}));
    const auto started = [answer = std::move(answer)](const QDBusMessage& reply) {
        answer(reply.type() == QDBusMessage::ErrorMessage ? reply.errorMessage() : QString());
    };
    send(bus_, managerCall(QStringLiteral("StartUnit"), {name_, QStringLiteral("replace")}),
         *calls_, started);
}

} // namespace platform
