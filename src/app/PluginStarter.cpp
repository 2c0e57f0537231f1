#include "app/PluginStarter.h"

#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "platform/processes/DetachedProgram.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"

#include <QFileInfo>
#include <QStringList>

#include <utility>

using platform::formatted;
using platform::UserService;

PluginStarter::PluginStarter(SystemCalls system, QString program, QString messages)
    : system_(std::move(system)), program_(std::move(program)), messages_(std::move(messages)) {}

void PluginStarter::start(std::function<void()> failed) {
    error_.clear();
    system_.askService([this, failed = std::move(failed)](const UserService::State& state) {
        if (!state.isInstalled) {
            startProgram(failed);
            return;
        }
        QNLog(qnlog_user, "Starting the service %s", serviceName);
        system_.startService([this, failed](const QString& error) {
            error_ = error;
            if (!error.isEmpty())
                failed();
        });
    });
}

void PluginStarter::startProgram(const std::function<void()>& failed) {
    QNLog(qnlog_user, "Starting the plug-in %@", program_);
    error_ = QFileInfo(program_).isExecutable()
                 ? system_.startProgram(program_, messages_)
                 : Texts::tr("The program is missing or not executable.");
    if (!error_.isEmpty())
        failed();
}

void PluginStarter::askWhetherItStarts(std::function<void(bool)> answer) const {
    system_.askService([answer = std::move(answer)](const UserService::State& state) {
        answer(state.isStarting());
    });
}

void PluginStarter::describe(std::function<void(const QString&)> answer) const {
    system_.askService([this, answer = std::move(answer)](const UserService::State& state) {
        answer(state.isInstalled ? describeService(state) : describeProgram());
    });
}

QString PluginStarter::describeService(const UserService::State& state) const {
    QStringList lines{formatted(Texts::tr("Service: %@ (%@, %@)"), QString::fromLatin1(serviceName),
                                state.load, state.activity)};
    if (!error_.isEmpty())
        lines += formatted(Texts::tr("The last start failed: %@"), error_);
    lines += formatted(Texts::tr("Its messages: %@"),
                       QStringLiteral("journalctl --user -u ") + QLatin1String(serviceName));
    return lines.join(QLatin1Char('\n'));
}

QString PluginStarter::describeProgram() const {
    constexpr int shown = 5;
    QStringList lines{formatted(Texts::tr("Program: %@"), program_)};
    if (!error_.isEmpty())
        lines += formatted(Texts::tr("The last start failed: %@"), error_);
    const QString last = platform::lastLines(messages_, shown);
    if (!last.isEmpty())
        lines +=
            formatted(Texts::tr("Its last messages, in %@:"), messages_) + QLatin1Char('\n') + last;
    return lines.join(QLatin1Char('\n'));
}
