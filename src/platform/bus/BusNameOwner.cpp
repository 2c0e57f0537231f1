#include "platform/bus/BusNameOwner.h"

#include "platform/base/ExceptionReport.h"

#include <QDBusConnectionInterface>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <utility>

namespace platform {

BusNameOwner::BusNameOwner(const QDBusConnection& bus, const QString& name,
                           std::function<void(const QString& owner)> changed)
    : changed_(std::move(changed)) {
    QDBusConnectionInterface* const daemon = bus.interface(); // null as soon as the bus has ended
    if (!bus.isConnected() || daemon == nullptr) {
        owner_.emplace();
        return;
    }
    QDBusServiceWatcher* const watcher = &watcher_.emplace(name, bus);
    QObject::connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, watcher,
                     [this](const QString&, const QString&, const QString& owner) { set(owner); });
    auto* const answer = new QDBusPendingCallWatcher(
        daemon->asyncCall(QStringLiteral("GetNameOwner"), name), watcher);
    QObject::connect(answer, &QDBusPendingCallWatcher::finished, watcher, [this, answer] {
        const QDBusPendingReply<QString> reply = *answer;
        if (!owner_)
            set(reply.isValid() ? reply.value() : QString());
        answer->deleteLater();
    });
}

void BusNameOwner::set(const QString& owner) {
    owner_ = owner;
    if (changed_)
        guarded(kExceptionInNotification, [&] { changed_(owner); });
}

} // namespace platform
