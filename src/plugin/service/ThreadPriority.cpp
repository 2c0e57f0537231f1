#include "plugin/service/ThreadPriority.h"

#include <QDBusMessage>

#include <sys/resource.h>
#include <unistd.h>

void raiseThreadPriority(const QDBusConnection& bus) {
    const pid_t thread = ::gettid();
    if (::setpriority(PRIO_PROCESS, static_cast<id_t>(thread), kSoundNiceLevel) == 0 ||
        !bus.isConnected())
        return;
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.RealtimeKit1"),
        QStringLiteral("/org/freedesktop/RealtimeKit1"),
        QStringLiteral("org.freedesktop.RealtimeKit1"), QStringLiteral("MakeThreadHighPriority"));
    call << static_cast<qulonglong>(thread) << kSoundNiceLevel;
    bus.send(call);
}
