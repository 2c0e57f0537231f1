#include "plugin/service/StatusCommand.h"

#include "platform/bus/SessionBus.h"
#include "platform/language/PlainTexts.h"
#include "plugin/service/PluginService.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusReply>

#include <cstdio>
#include <string>

namespace {

constexpr int patience = 5000; // ms

int fail(const std::string& why) {
    std::fprintf(stderr, "TonvalePlugin: %s\n", why.c_str());
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
        return fail(PlainTexts::tr("There is no session bus."));
    auto question =
        QDBusMessage::createMethodCall(PluginService::busName(), PluginService::objectPath(),
                                       PluginService::busName(), QStringLiteral("Status"));
    question.setAutoStartService(false);
    const QDBusReply<QString> answer = bus.call(question, QDBus::Block, patience);
    if (isNobodyThere(answer.error()))
        return fail(PlainTexts::tr("No plug-in runs in this session."));
    if (!answer.isValid())
        return fail(PlainTexts::filled(PlainTexts::tr("The plug-in does not answer: %1"),
                                       {answer.error().message().toStdString()}));
    if (std::fputs(answer.value().toUtf8().constData(), stdout) < 0 || std::fflush(stdout) != 0)
        return fail(PlainTexts::tr("The status can't be written."));
    return 0;
}
