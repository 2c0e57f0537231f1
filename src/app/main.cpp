#include "app/CommandLine.h"
#include "app/InstallDisk.h"
#include "app/MVAppController.h"
#include "framework/application/OptionParser.h"
#include "framework/application/QNApplicationMain.h"
#include "look/window/AlertWindow.h"
#include "platform/base/DescriptorLimit.h"
#include "platform/base/SystemLog.h"
#include "platform/bundle/Bundle.h"
#include "platform/bus/SingleInstance.h"
#include "platform/crash/CrashHandler.h"
#include "platform/loop/SignalEvents.h"
#include "platform/window/BundleImage.h"

#include <QCoreApplication>
#include <QGuiApplication>

#include <exception>

namespace {

/// The program's files are not touched before it is known to be the only instance.
std::unique_ptr<QNGUIApplication> makeInterface() {
    QGuiApplication::setDesktopFileName(QStringLiteral("com.quarnel.Tonvale"));
    QCoreApplication::setApplicationName(QStringLiteral("Tonvale"));
    QCoreApplication::setApplicationVersion(
        QString::fromStdString(platform::Bundle::main().version()));
    InstallDisk::endRunningCopies();
    auto instance = platform::SingleInstance::acquire(
        QStringLiteral("com.quarnel.Tonvale"), QNApplication::options().value(CommandLine::action));
    if (!instance)
        return nullptr;
    platform::handleCrashes({.name = "Tonvale",
                             .version = platform::Bundle::main().version(),
                             .build = platform::Bundle::main().text("QNBuildIdentifier")});
    MVAppController::initialize();
    QGuiApplication::setWindowIcon(platform::bundleIcon(QStringLiteral("tonvale")));
    AlertWindow::install();
    return std::make_unique<MVAppController>(std::move(instance));
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (const auto status = CommandLine::answer(argumentTexts(argc, argv)))
            return *status;
        platform::unblockSignals();
        platform::ignoreWriteSignals();
        platform::raiseDescriptorLimit();
        QNGUIApplication::setMainInterface(&makeInterface);
        return QNApplicationMain(nullptr, argc, argv);
    } catch (const std::exception& exception) {
        platform::systemLog(platform::LogPriority::error, "Tonvale can't run: %s",
                            exception.what());
        return 1;
    }
}
