#include "platform/desktop/SleepTimer.h"

#include <QDBusMessage>
#include <QDBusReply>
#include <QStringList>
#include <QVariantMap>

#include <algorithm>
#include <limits>

namespace platform {

namespace {

constexpr int patienceInMilliseconds = 1000;

bool isSleep(const QString& action) {
    static const QStringList actions{
        QStringLiteral("suspend"),      QStringLiteral("hibernate"),
        QStringLiteral("hybrid-sleep"), QStringLiteral("suspend-then-hibernate"),
        QStringLiteral("sleep"), // whichever of them suits the machine
    };
    return actions.contains(action);
}

unsigned wholeMinutes(quint64 microseconds) {
    constexpr auto never = std::numeric_limits<quint64>::max();
    if (microseconds == never)
        return 0;
    constexpr quint64 minute = 60'000'000;
    const quint64 minutes = microseconds / minute + (microseconds % minute != 0 ? 1 : 0);
    return static_cast<unsigned>(std::min<quint64>(minutes, std::numeric_limits<unsigned>::max()));
}

} // namespace

unsigned machineSleepTimer(const QDBusConnection& bus) {
    auto question = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("GetAll"));
    question << QStringLiteral("org.freedesktop.login1.Manager");
    question.setAutoStartService(false);
    const QDBusReply<QVariantMap> reply = bus.call(question, QDBus::Block, patienceInMilliseconds);
    if (!reply.isValid())
        return 0;
    const QVariantMap properties = reply.value();
    if (!isSleep(properties.value(QStringLiteral("IdleAction")).toString()))
        return 0;
    return wholeMinutes(properties.value(QStringLiteral("IdleActionUSec")).toULongLong());
}

} // namespace platform
