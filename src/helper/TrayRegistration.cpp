#include "helper/TrayRegistration.h"

#include "platform/processes/ProcessInfo.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <utility>

namespace {

const QString name = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString path = QStringLiteral("/StatusNotifierWatcher");

QDBusMessage callOf(const QString& owner, const QString& interface, const QString& method,
                    const QVariantList& arguments) {
    QDBusMessage call = QDBusMessage::createMethodCall(owner, path, interface, method);
    call.setAutoStartService(false);
    call.setArguments(arguments);
    return call;
}

} // namespace

TrayRegistration::TrayRegistration(const QDBusConnection& bus, std::function<void()> changed)
    : bus_(bus)
    , changed_(std::move(changed))
    , watcher_(bus, name, [this](const QString& owner) { watcherChanged(owner); }) {
    // With the name, the toolkit would wait for its owner, and abort on a bus that has just ended.
    bus_.connect(QString(), path, name, QStringLiteral("StatusNotifierHostRegistered"), this,
                 SLOT(hostRegistered(QDBusMessage)));
    bus_.connect(QString(), path, name, QStringLiteral("StatusNotifierHostUnregistered"), this,
                 SLOT(hostUnregistered(QDBusMessage)));
}

void TrayRegistration::watcherChanged(const QString& owner) {
    calls_ = std::make_unique<QObject>();
    owner_ = owner;
    process_.clear();
    set(isRegistered_, false);
    set(hasHost_, false);
    if (owner_.isEmpty())
        return;
    registerItem();
    askForHost();
    askForProcess();
}

/// A second time changes nothing for a watcher that knows the icon, and helps with those that have
/// told their hosts before these listened.
void TrayRegistration::hostRegistered(const QDBusMessage& message) {
    if (owner_.isEmpty() || message.service() != owner_)
        return;
    set(hasHost_, true);
    registerItem();
}

void TrayRegistration::hostUnregistered(const QDBusMessage& message) {
    if (!owner_.isEmpty() && message.service() == owner_)
        askForHost();
}

/// By the unique name: the icon is the connection's, whatever else it is called.
void TrayRegistration::registerItem() {
    ask(callOf(owner_, name, QStringLiteral("RegisterStatusNotifierItem"), {bus_.baseService()}),
        [this](const QDBusMessage& reply) {
            set(isRegistered_, reply.type() == QDBusMessage::ReplyMessage);
        });
}

void TrayRegistration::askForHost() {
    ask(callOf(owner_, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
               {name, QStringLiteral("IsStatusNotifierHostRegistered")}),
        [this](const QDBusMessage& message) {
            const QDBusPendingReply<QDBusVariant> reply(message);
            set(hasHost_, reply.isValid() && reply.value().variant().toBool());
        });
}

void TrayRegistration::askForProcess() {
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetConnectionUnixProcessID"));
    call.setArguments({owner_});
    ask(call, [this](const QDBusMessage& message) {
        const QDBusPendingReply<uint> process(message);
        if (process.isValid())
            process_ = QString::fromStdString(
                platform::commandName(static_cast<pid_t>(process.value())).value_or(""));
    });
}

void TrayRegistration::ask(const QDBusMessage& call,
                           std::function<void(const QDBusMessage&)> answered) {
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), calls_.get());
    connect(watcher, &QDBusPendingCallWatcher::finished, calls_.get(),
            [watcher, answered = std::move(answered)] {
                watcher->deleteLater();
                answered(watcher->reply());
            });
}

void TrayRegistration::set(bool& fact, bool value) {
    const bool wasShown = isShown();
    fact = value;
    if (isShown() != wasShown)
        changed_();
}
