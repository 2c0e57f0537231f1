#include "plugin/service/StatusCommand.h"

#include "platform/bus/SessionBus.h"
#include "plugin/service/PluginService.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusReply>

#include <cstdio>

namespace {

constexpr int patience = 5000; // ms

int fail(const QString& why) {
    std::fprintf(stderr, "TonvalePlugin: %s\n", qUtf8Printable(why));
    return 1;
}

bool isNobodyThere(const QDBusError& error) {
    return error.type() == QDBusError::ServiceUnknown ||
           error.name() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner");
}

} // namespace

int printPluginStatus() {
    const QDBusConnection bus = platform::sessionBus();
    if (!bus.isConnected())
        return fail(QStringLiteral("there is no session bus"));
    auto question =
        QDBusMessage::createMethodCall(PluginService::busName(), PluginService::objectPath(),
                                       PluginService::busName(), QStringLiteral("Status"));
    question.setAutoStartService(false);
    const QDBusReply<QString> answer = bus.call(question, QDBus::Block, patience);
    if (isNobodyThere(answer.error()))
        return fail(QStringLiteral("no plug-in runs in this session"));
    if (!answer.isValid())
        return fail(QStringLiteral("the plug-in does not answer: ") + answer.error().message());
    if (std::fputs(answer.value().toUtf8().constData(), stdout) < 0 || std::fflush(stdout) != 0)
        return fail(QStringLiteral("the status cannot be written"));
    return 0;
}
