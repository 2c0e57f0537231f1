#include "platform/Bundle.h"
#include "platform/DistributedNotification.h"
#include "platform/RunLoop.h"
#include "platform/RunLoopNotifier.h"
#include "platform/SystemLog.h"
#include "platform/TerminationSignals.h"
#include "plugin/PluginHost.h"

#include <QCoreApplication>

#include <cstdio>
#include <exception>
#include <string_view>

namespace {

constexpr int wrongUsage = 2;

constexpr const char* usage = "Usage: Tonvale [--help | --version]\n"
                              "Lets the Tonvale application set the volume of each program.\n"
                              "Runs until it is told to end.\n";

int run(int& argc, char** argv) {
    const QCoreApplication application(argc, argv);
    platform::RunLoop loop;
    const platform::RunLoopNotifier notifier(loop);
    const platform::TerminationSignals signals(loop, [](int) { QCoreApplication::quit(); });
    PluginHost host(loop);
    const platform::DistributedNotificationObserver launches(
        QStringLiteral("com.quarnel.mivo.guiDidLaunch"), [&host] { host.applicationLaunched(); });
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view option = argc == 2 ? argv[1] : "";
    if (option == "--help") {
        std::fputs(usage, stdout);
        return 0;
    }
    if (option == "--version") {
        std::printf("Tonvale plug-in %s\n", platform::Bundle::main().version().c_str());
        return 0;
    }
    if (argc > 1) {
        std::fputs(usage, stderr);
        return wrongUsage;
    }
    try {
        return run(argc, argv);
    } catch (const std::exception& exception) {
        platform::systemLog(platform::LogPriority::error, "The plug-in can't run: %s",
                            exception.what());
        return 1;
    }
}
