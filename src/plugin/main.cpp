#include "framework/crash/CrashFinisher.h"
#include "platform/base/DescriptorLimit.h"
#include "platform/base/SystemLog.h"
#include "platform/bundle/Bundle.h"
#include "platform/bus/DistributedNotification.h"
#include "platform/bus/SessionBus.h"
#include "platform/crash/CrashHandler.h"
#include "platform/files/SessionLock.h"
#include "platform/language/PlainTexts.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/SignalEvents.h"
#include "platform/qtloop/RunLoopNotifier.h"
#include "plugin/host/PluginHost.h"
#include "plugin/host/TerminationSignals.h"
#include "plugin/service/PluginService.h"
#include "plugin/service/ResumeObserver.h"
#include "plugin/service/StatusCommand.h"
#include "plugin/service/ThreadPriority.h"

#include <QCoreApplication>

#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

namespace {

// Those of docs/plugin.md. The service is not started again after the last two.
constexpr int failure = 1;
constexpr int wrongUsage = 2;
constexpr int anotherRuns = 3;

ApplicationReports reportsTo(PluginService& service) {
    return {.changedElsewhere =
                [&service](std::uint32_t pid, const ProgramSetting& setting) {
                    Q_EMIT service.ChangedElsewhere(pid, setting.percent, setting.muted);
                },
            .notControllable =
                [&service](std::uint32_t pid, const std::string& reason) {
                    Q_EMIT service.NotControllable(pid, QString::fromStdString(reason));
                }};
}

int serve(platform::RunLoop& loop) {
    platform::SessionLock lock("com.quarnel.Tonvale.Plugin");
    if (!lock.take()) {
        platform::systemLog(platform::LogPriority::warning,
                            "The plug-in runs in this session already");
        return anotherRuns;
    }
    tendCrashRecords();
    platform::raiseDescriptorLimit();
    raiseThreadPriority(platform::systemBus());
    const TerminationSignals signals(loop, [](int) { QCoreApplication::quit(); });
    const platform::MainQueueService mainQueue(loop);
    PluginHost* running = nullptr;
    PluginService service(
        {.status = [&running] { return describe(running->status()); },
         .told =
             [&running](const std::string& file, std::string_view preferences,
                        std::span<const std::string> news) {
                 return running->memory().told(file, preferences, news);
             },
         .applicationChanged =
             [&running](bool isThere) { running->memory().applicationChanged(isThere); }});
    PluginHost host(loop, reportsTo(service));
    running = &host;
    const platform::DistributedNotificationObserver launches(
        QStringLiteral("com.quarnel.mivo.guiDidLaunch"), [&host] { host.programs().connectNow(); });
    const ResumeObserver resumes([&host] { host.levels().rebuild(); });
    return QCoreApplication::exec();
}

int printUsage() {
    const std::string text =
        PlainTexts::tr("Usage: TonvalePlugin [--status | --version | --help]\n"
                       "Lets the Tonvale application set the volume of each program.\n"
                       "Runs until it is told to end; one is enough for a session.\n"
                       "\n"
                       "  --status    print what the plug-in that runs in this session sees\n"
                       "  --version   print the version\n"
                       "  -h, --help  print this text\n");
    return std::fputs(text.c_str(), stdout) < 0 ? failure : 0;
}

int failUsage(const std::string& pattern, const std::string& argument) {
    std::fprintf(stderr, "TonvalePlugin: %s\n", PlainTexts::filled(pattern, {argument}).c_str());
    return wrongUsage;
}

void handleOwnCrashes() {
    platform::handleCrashes({.name = "TonvalePlugin",
                             .version = platform::Bundle::main().version(),
                             .build = platform::Bundle::main().text("QNBuildIdentifier")});
}

#ifdef TONVALE_CRASH_COMMAND
/// For tests, so that there is a report.
[[gnu::noinline]] void crash() {
    handleOwnCrashes();
    static int* volatile nowhere = nullptr;
    *nowhere = 1;
}
#endif

int run(int argc, char** argv) {
    if (argc > 2)
        return failUsage(PlainTexts::tr("%1 is one option too many; see --help."), argv[2]);
    const std::string option = argc == 2 ? argv[1] : "";
    if (option == "--help" || option == "-h")
        return printUsage();
    if (option == "--version") {
        std::printf("Tonvale plug-in %s\n", platform::Bundle::main().version().c_str());
        return 0;
    }
#ifdef TONVALE_CRASH_COMMAND
    if (option == "--crash")
        crash();
#endif
    if (argc == 2 && option != "--status")
        return failUsage(PlainTexts::tr("There is no option %1; see --help."), option);
    if (argc == 1)
        handleOwnCrashes();
    platform::unblockSignals();
    const QCoreApplication application(argc, argv);
    platform::RunLoop loop;
    const platform::RunLoopNotifier notifier(loop);
    return argc == 2 ? printPluginStatus() : serve(loop);
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& exception) {
        platform::systemLog(platform::LogPriority::error, "The plug-in can't run: %s",
                            exception.what());
        return failure;
    }
}
