#include "platform/bus/UserService.h"

#include "platform/bus/UserManagerCalls.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingReply>
#include <QVariantMap>

#include <utility>

namespace platform {

namespace {

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
        const auto question = UserManagerCalls::call(
            unit.value().path(), QStringLiteral("org.freedesktop.DBus.Properties"),
            QStringLiteral("GetAll"), {QStringLiteral("org.freedesktop.systemd1.Unit")});
        UserManagerCalls::send(bus_, question, *calls_, [answer](const QDBusMessage& properties) {
            answer(stateOf(properties));
        });
    };
    UserManagerCalls::send(bus_, UserManagerCalls::managerCall(QStringLiteral("LoadUnit"), {name_}),
                           *calls_, withUnit);
}

void UserService::start(std::function<void(const QString&)> answer) {
    bus_.send(UserManagerCalls::managerCall(QStringLiteral("ResetFailedUnit"), {name_}));
    const auto started = [answer = std::move(answer)](const QDBusMessage& reply) {
        answer(reply.type() == QDBusMessage::ErrorMessage ? reply.errorMessage() : QString());
    };
    UserManagerCalls::send(bus_,
                           UserManagerCalls::managerCall(QStringLiteral("StartUnit"),
                                                         {name_, QStringLiteral("replace")}),
                           *calls_, started);
}

} // namespace platform
