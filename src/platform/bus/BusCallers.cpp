#include "platform/bus/BusCallers.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <algorithm>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

constexpr std::size_t bound = 256;

QDBusMessage question(const QString& sender) {
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetConnectionUnixUser"));
    call.setArguments({sender});
    return call;
}

} // namespace

void BusCallers::ask(const QString& sender, Answer answer) {
    if (Caller* const known = find(sender)) {
        if (known->isOurs)
            answer(*known->isOurs);
        else
            known->waiting.push_back(std::move(answer));
        return;
    }
    if (callers_.size() == bound)
        callers_.pop_front();
    callers_.push_back({sender});
    callers_.back().waiting.push_back(std::move(answer));
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(question(sender)), &watchers_);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &watchers_,
                     [this, watcher, sender] {
                         const QDBusPendingReply<uint> user = *watcher;
                         watcher->deleteLater();
                         learn(sender, user.isValid() && user.value() == ::geteuid());
                     });
}

BusCallers::Caller* BusCallers::find(const QString& sender) {
    const auto found = std::ranges::find(callers_, sender, &Caller::name);
    return found != callers_.end() ? &*found : nullptr;
}

void BusCallers::learn(const QString& sender, bool isOurs) {
    Caller* const caller = find(sender);
    if (caller == nullptr)
        return;
    caller->isOurs = isOurs;
    for (const Answer& answer : std::exchange(caller->waiting, {}))
        answer(isOurs);
}

} // namespace platform
