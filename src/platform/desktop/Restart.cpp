#include "platform/desktop/Restart.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QVariantList>

#include <cerrno>
#include <limits>
#include <utility>

namespace platform {

namespace {

using Refusal = std::function<void(const QDBusError& error)>;

struct SessionManager {
    const char* presence; ///< the name on the bus that shows that it runs
    const char* service;  ///< the name that takes the request
    const char* path;
    const char* interface;
    const char* method;
    bool takesSaving; ///< takes an argument: whether programs may save first
};

constexpr SessionManager sessionManagers[] = {
    {"org.gnome.SessionManager", "org.gnome.SessionManager", "/org/gnome/SessionManager",
     "org.gnome.SessionManager", "Reboot", false},
    {"org.kde.ksmserver", "org.kde.Shutdown", "/Shutdown", "org.kde.Shutdown", "logoutAndReboot",
     false},
    {"org.xfce.SessionManager", "org.xfce.SessionManager", "/org/xfce/SessionManager",
     "org.xfce.Session.Manager", "Restart", true},
    {"org.lxqt.session", "org.lxqt.session", "/LXQtSession", "org.lxqt.session", "reboot", false},
};

bool isOwned(const QDBusConnection& bus, const char* name) {
    constexpr int patience = 1000; // ms
    const QString daemon = QStringLiteral("org.freedesktop.DBus");
    auto question = QDBusMessage::createMethodCall(daemon, QStringLiteral("/org/freedesktop/DBus"),
                                                   daemon, QStringLiteral("NameHasOwner"));
    question << QString::fromLatin1(name);
    return QDBusReply<bool>(bus.call(question, QDBus::Block, patience)).value();
}

const SessionManager* runningManager(const QDBusConnection& session) {
    if (!session.isConnected())
        return nullptr;
    for (const SessionManager& manager : sessionManagers) {
        if (isOwned(session, manager.presence))
            return &manager;
    }
    return nullptr;
}

QDBusMessage requestTo(const SessionManager& manager) {
    auto request = QDBusMessage::createMethodCall(
        QString::fromLatin1(manager.service), QString::fromLatin1(manager.path),
        QString::fromLatin1(manager.interface), QString::fromLatin1(manager.method));
    if (manager.takesSaving)
        request << true;
    return request;
}

/// Whoever asks the user before it answers takes as long as the user.
bool isNoAnswer(const QDBusError& error) {
    return error.type() == QDBusError::NoReply || error.type() == QDBusError::Timeout ||
           error.type() == QDBusError::Disconnected;
}

int send(const QDBusConnection& bus, const QDBusMessage& request, Refusal refused) {
    if (!bus.isConnected())
        return ENOTCONN;
    auto* const watcher =
        new QDBusPendingCallWatcher(bus.asyncCall(request, std::numeric_limits<int>::max()));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [watcher, refused = std::move(refused)] {
                         watcher->deleteLater();
                         if (watcher->isError() && !isNoAnswer(watcher->error()))
                             refused(watcher->error());
                     });
    return 0;
}

int askLogind(const QDBusConnection& system, const std::function<void(const QString&)>& refused) {
    auto request = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Reboot"));
    request << true; // interactive
    request.setInteractiveAuthorizationAllowed(true);
    return send(system, request, [refused](const QDBusError& error) {
        if (refused)
            refused(error.message());
    });
}

bool isUnknownRequest(const QDBusError& error) {
    switch (error.type()) {
    case QDBusError::ServiceUnknown:
    case QDBusError::UnknownObject:
    case QDBusError::UnknownInterface:
    case QDBusError::UnknownMethod:
        return true;
    default:
        return false;
    }
}

} // namespace

int requestRestart(const QDBusConnection& session, const QDBusConnection& system,
                   const std::function<void(const QString& reason)>& refused) {
    const SessionManager* const manager = runningManager(session);
    if (manager == nullptr)
        return askLogind(system, refused);
    return send(session, requestTo(*manager), [system, refused](const QDBusError& error) {
        const bool handedOn = isUnknownRequest(error) && askLogind(system, refused) == 0;
        if (!handedOn && refused)
            refused(error.message());
    });
}

} // namespace platform
