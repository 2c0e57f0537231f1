#include "framework/crash/CrashFinisher.h"
#include "helper/Helper.h"
#include "helper/InstalledApplication.h"
#include "platform/base/SystemLog.h"
#include "platform/bundle/Bundle.h"
#include "platform/bus/SessionBus.h"
#include "platform/bus/SingleInstance.h"
#include "platform/crash/CrashHandler.h"
#include "platform/language/MessageLanguages.h"
#include "platform/language/PlainTexts.h"

#include <QCoreApplication>

#include <cstdio>
#include <exception>
#include <string>

namespace {

constexpr int failure = 1;
constexpr int wrongUsage = 2;

/// The application's language counts, which may have been started from another environment.
void takeLanguage() {
    const std::string language = InstalledApplication::language();
    if (language.empty() || language == platform::messageLanguage())
        return;
    qputenv("LC_ALL", language == "C" ? "C.UTF-8" : language.c_str());
    qputenv("LANGUAGE", language.c_str());
}

int serve() {
    auto bus = platform::sessionBus();
    if (!bus.isConnected()) {
        platform::systemLog(platform::LogPriority::info, "There is no session bus for an icon");
        return 0;
    }
    const auto instance =
        platform::SingleInstance::acquire(QStringLiteral("com.quarnel.TonvaleHelper"));
    if (!instance)
        return 0;
    tendCrashRecords();
    takeLanguage();
    // The session has ended then.
    bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"),
                QCoreApplication::instance(), SLOT(quit()));
    const Helper helper(bus, *instance, Helper::usualSurroundings());
    return QCoreApplication::exec();
}

int printUsage() {
    const std::string text =
        PlainTexts::tr("Usage: TonvaleHelper [--version | --help]\n"
                       "Shows the icon of the Tonvale application in the tray.\n"
                       "Runs until it is told to end; one is enough for a session.\n"
                       "\n"
                       "  --version   print the version\n"
                       "  -h, --help  print this text\n");
    return std::fputs(text.c_str(), stdout) < 0 ? failure : 0;
}

int run(int argc, char** argv) {
    const std::string option = argc > 1 ? argv[1] : "";
    if (option == "--help" || option == "-h")
        return printUsage();
    if (option == "--version") {
        std::printf("TonvaleHelper %s\n", platform::Bundle::main().version().c_str());
        return 0;
    }
    if (argc > 1) {
        std::fprintf(
            stderr, "TonvaleHelper: %s\n",
            PlainTexts::filled(PlainTexts::tr("There is no option %1; see --help."), {option})
                .c_str());
        return wrongUsage;
    }
    platform::handleCrashes({.name = "TonvaleHelper",
                             .version = platform::Bundle::main().version(),
                             .build = platform::Bundle::main().text("QNBuildIdentifier")});
    const QCoreApplication application(argc, argv);
    return serve();
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& exception) {
        platform::systemLog(platform::LogPriority::error, "The helper can't run: %s",
                            exception.what());
        return failure;
    }
}
