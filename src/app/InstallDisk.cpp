#include "app/InstallDisk.h"

#include "framework/application/QNApplication.h"
#include "framework/installer/QNAppInstaller.h"
#include "install/InstallVolume.h"
#include "install/MVInstallerController.h"
#include "install/MenuEntries.h"
#include "platform/bundle/Bundle.h"
#include "platform/bus/SessionBus.h"
#include "platform/processes/EndProcesses.h"
#include "platform/qtloop/WaitServingEvents.h"
#include "platform/text/Texts.h"

#include <chrono>
#include <filesystem>

namespace {

constexpr std::chrono::seconds longestSaving{3};

/// The volume that the copy was told; empty if it was not. The option's own value would have lost
/// blanks at its ends.
QString installVolume() {
    const QStringList arguments = QNApplication::arguments();
    const qsizetype at =
        arguments.indexOf(QLatin1Char('-') + QLatin1String(QNAppInstaller::installVolumeOption));
    return at > 0 ? arguments.value(at + 1) : QString();
}

} // namespace

void InstallDisk::endRunningCopies() {
    if (!QNAppInstaller::appIsRunningFromReadOnlyDiskImage())
        return;
    platform::waitServingEvents([] {
        for (const char* const program : {"Tonvale", "TonvaleHelper"})
            static_cast<void>(platform::endProcesses(program, longestSaving));
    });
}

void InstallDisk::relocate() {
    if (!QNAppInstaller::appIsRunningFromReadOnlyDiskImage())
        return;
    QNAppInstaller installer;
    installer.setRequiredInstall(true);
    installer.setSilentInstall(true);
    installer.installWithUpgradePath({});
}

QString InstallDisk::finish() {
    const QString volume = installVolume();
    if (!volume.startsWith(QLatin1Char('/')))
        return {};
    const std::filesystem::path bundle = platform::Bundle::main().contents().parent_path();
    if (MVInstallerController::usesBuiltInLibrary())
        writeMenuEntries(bundle);
    disposeOfInstallVolume(volume.toStdString(), bundle, platform::systemBus());
    return platform::formatted(
        Texts::tr("%@ is now on your computer, in %@, and in the menu of programs."),
        platform::Bundle::main().name(), bundle.parent_path().string());
}
