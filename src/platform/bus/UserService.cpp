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
    state.isOutdated = reply.value().value(QStringLiteral("NeedDaemonReload")).toBool();
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

/// Answers with systemd's error, or with an empty text.
void UserService::call(const QString& method, const QVariantList& arguments, Answer answer) {
    UserManagerCalls::send(
        bus_, UserManagerCalls::managerCall(method, arguments), *calls_,
        [answer = std::move(answer)](const QDBusMessage& reply) {
            answer(reply.type() == QDBusMessage::ErrorMessage ? reply.errorMessage() : QString());
        });
}

void UserService::start(Answer answer) {
    bus_.send(UserManagerCalls::managerCall(QStringLiteral("ResetFailedUnit"), {name_}));
    call(QStringLiteral("StartUnit"), {name_, QStringLiteral("replace")}, std::move(answer));
}

/// The manager sees links only after a reload.
void UserService::changeLinks(const QString& method, const QVariantList& arguments, Answer answer) {
    call(method, arguments, [this, answer = std::move(answer)](const QString& error) {
        if (!error.isEmpty()) {
            answer(error);
            return;
        }
        reload(answer);
    });
}

void UserService::reload(Answer answer) {
    call(QStringLiteral("Reload"), {}, std::move(answer));
}

void UserService::enable(const QString& unitFile, Answer answer) {
    constexpr bool isForThisSessionOnly = false;
    constexpr bool replacesLinks = false;
    changeLinks(QStringLiteral("EnableUnitFiles"),
                {QStringList{unitFile}, isForThisSessionOnly, replacesLinks}, std::move(answer));
}

void UserService::remove(Answer answer) {
    constexpr bool isForThisSessionOnly = false;
    bus_.send(UserManagerCalls::managerCall(QStringLiteral("StopUnit"),
                                            {name_, QStringLiteral("replace")}));
    changeLinks(QStringLiteral("DisableUnitFiles"), {QStringList{name_}, isForThisSessionOnly},
                std::move(answer));
}

} // namespace platform
