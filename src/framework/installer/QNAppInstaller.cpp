#include "framework/installer/QNAppInstaller.h"

#include "framework/application/ExceptionPlaces.h"
#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "platform/base/Directories.h"
#include "platform/base/ExceptionReport.h"
#include "platform/bundle/Bundle.h"
#include "platform/files/FileMarks.h"
#include "platform/files/SetAside.h"
#include "platform/files/StagedCopy.h"
#include "platform/processes/IndependentProgram.h"
#include "platform/processes/ProcessInfo.h"
#include "platform/qtloop/WaitServingEvents.h"
#include "platform/text/Texts.h"
#include "platform/volumes/DiskImage.h"
#include "platform/window/Alert.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace fs = std::filesystem;
using platform::Alert;
using platform::formatted;
using platform::SetAside;

namespace {

constexpr const char* relauncherInBundle = "Contents/Helpers/TonvaleRelauncher";
constexpr const char* packageInBundle = "Contents/Resources/package";

fs::path runningBundle() {
    return platform::Bundle::main().contents().parent_path();
}

/// As file managers show it.
QString displayName(const fs::path& folder) {
    return QString::fromStdString(folder.filename());
}

bool isThere(const fs::path& path) {
    std::error_code error;
    return fs::symlink_status(path, error).type() > fs::file_type::not_found;
}

bool isWritable(const fs::path& folder) {
    return ::faccessat(AT_FDCWD, folder.c_str(), W_OK, AT_EACCESS) == 0;
}

/// What moves bundles out of the way of a copy, and back if that fails.
class OldCopies {
  public:
    ~OldCopies() {
        if (isReplaced_)
            return;
        for (; !moved_.empty(); moved_.pop_back())
            moved_.back().putBack();
    }
    OldCopies() = default;
    OldCopies(const OldCopies&) = delete;
    OldCopies& operator=(const OldCopies&) = delete;

    void moveAway(const fs::path& bundle) {
        if (bundle.empty() || !isThere(bundle))
            return;
        auto moved = SetAside::anywhere(bundle);
        if (!moved)
            throw fs::filesystem_error("rename", bundle,
                                       std::error_code(errno, std::generic_category()));
        QNLog(qnlog_information, "%@ was moved to %@", bundle.string(), moved->place().string());
        moved_.push_back(*std::move(moved));
    }
    void areReplaced() noexcept { isReplaced_ = true; }

  private:
    std::vector<SetAside> moved_;
    bool isReplaced_ = false;
};

} // namespace

QNAppInstaller::QNAppInstaller()
    : QNAppInstaller({.bundle = runningBundle(),
                      .terminate = [] { QNApplication::current()->terminate(); },
                      .shouldExit = [] { return QNApplication::current()->shouldExit(); },
                      .start = &platform::startIndependently}) {}

QNAppInstaller::QNAppInstaller(Dependencies dependencies)
    : dependencies_(std::move(dependencies)), facts_(bundleFacts(dependencies_.bundle)) {}

bool QNAppInstaller::appIsRunningFromReadOnlyLocalVolume() {
    bool is = false;
    platform::guarded(kExceptionInVolumeQuery,
                      [&] { is = platform::isOnReadOnlyLocalVolume(runningBundle()); });
    return is;
}

bool QNAppInstaller::appIsRunningFromReadOnlyDiskImage() {
    if (isThere(runningBundle() / packageInBundle) || !appIsRunningFromReadOnlyLocalVolume())
        return false;
    bool is = false;
    platform::guarded(kExceptionInVolumeQuery, [&] {
        is = platform::diskImagePathForVolumePath(platform::volumePathFor(runningBundle()))
                 .has_value();
    });
    return is;
}

bool QNAppInstaller::isValidInstallPath(const fs::path& path) {
    const fs::path folder = path.parent_path();
    return !platform::isImmutable(path) && isWritable(folder) && !platform::isInTrash(path) &&
           folder.native().find("/Backups.backupdb/") == std::string::npos;
}

fs::path QNAppInstaller::defaultInstallFolder() const {
    constexpr mode_t usual = 0755;
    fs::path local = platform::applicationsDirectory(platform::Domain::local);
    if (isWritable(local) || !allowUserSpecific_)
        return local;
    const fs::path own = platform::applicationsDirectory(platform::Domain::user);
    return !own.empty() && platform::makeDirectories(own, usual) ? own : fs::path();
}

fs::path QNAppInstaller::findUpgradePath() const {
    return ::findUpgradePath(dependencies_.bundle);
}

QString QNAppInstaller::name() const {
    return QString::fromStdString(facts_.name);
}

QNAppInstaller::Choice QNAppInstaller::ask(const fs::path& folder, bool isUpgrade) const {
    QString message = promptMessage_;
    if (message.isEmpty() && requiredInstall_)
        message = formatted(Texts::tr("%@ will be copied to the %@ folder."), name(),
                            displayName(folder));
    else if (message.isEmpty())
        message = formatted(
            Texts::tr("%@ appears to be running from an install disk. It is highly recommended "
                      "that you copy %@ to your computer and open it from there; if launched from "
                      "an external disk, then that disk must always be available when using %@."),
            name(), name(), name());
    Alert alert{
        .title = requiredInstall_ ? Texts::tr("Copy to Computer") : Texts::tr("Copy to Computer?"),
        .message = message,
        .defaultButton = formatted(isUpgrade ? Texts::tr("Update in the %@ Folder and Relaunch")
                                             : Texts::tr("Copy to the %@ Folder and Relaunch"),
                                   displayName(folder))};
    if (!requiredInstall_) {
        alert.alternateButton = Texts::tr("Continue");
        alert.otherButton = Texts::tr("Quit");
    }
    switch (alert.run()) {
    case Alert::standard:
        return Choice::copy;
    case Alert::alternate:
        return Choice::goOn;
    default:
        return Choice::leave;
    }
}

/// Empty if there is none.
fs::path QNAppInstaller::newerCopy(const fs::path& destination, const fs::path& upgradePath) const {
    std::vector<fs::path> bundles = installedBundles();
    bundles.push_back(destination);
    bundles.push_back(upgradePath);
    const fs::path best = bestUpgradeURLForBundle(dependencies_.bundle, bundles);
    return isNewerVersion(bundleFacts(best).version, facts_.version) ? best : fs::path();
}

bool QNAppInstaller::mayReplace(const fs::path& newer) const {
    const Alert alert{.kind = Alert::Kind::warning,
                      .title = formatted(Texts::tr("A newer %@ is on this computer"), name()),
                      .message = formatted(
                          Texts::tr("It is version %@, in %@. The install disk holds the older "
                                    "version %@. Click 'Cancel' to start the newer one."),
                          bundleFacts(newer).version, newer.parent_path().string(), facts_.version),
                      .defaultButton = Texts::tr("Use the Older Version"),
                      .alternateButton = Texts::tr("Cancel"),
                      .isGuarded = true};
    return alert.run() == Alert::standard;
}

void QNAppInstaller::installWithUpgradePath(const fs::path& upgradePath) {
    const fs::path folder = defaultInstallFolder();
    if (folder.empty()) {
        fail(QString::fromLocal8Bit(std::strerror(errno)));
        return;
    }
    if (!silentInstall_) {
        const Choice choice = ask(folder, !upgradePath.empty());
        if (choice == Choice::leave)
            dependencies_.terminate();
        if (choice != Choice::copy || dependencies_.shouldExit())
            return;
    }
    const fs::path destination = folder / dependencies_.bundle.filename();
    const fs::path newer = newerCopy(destination, upgradePath);
    const bool isAllowed = newer.empty() || mayReplace(newer);
    if (dependencies_.shouldExit())
        return;
    if (!isAllowed)
        quitAndLaunch(newer, {}); // the image stays, for it holds something else
    else
        copyTo(destination, {upgradePath, isValidInstallPath(newer) ? newer : fs::path()});
}

void QNAppInstaller::copyTo(const fs::path& destination, const std::vector<fs::path>& older) {
    const std::string previous = bundleFacts(destination).version;
    QNLog(qnlog_information,
          previous.empty() ? "Copying %@ %@ to %@" : "Updating %@ to %@ in %@, where %@ was",
          facts_.name, facts_.version, destination.string(), previous);
    try {
        if (!isValidInstallPath(destination))
            throw fs::filesystem_error("write", destination,
                                       std::make_error_code(std::errc::permission_denied));
        std::unique_ptr<platform::StagedCopy> copy;
        platform::waitServingEvents([&] {
            copy = std::make_unique<platform::StagedCopy>(dependencies_.bundle, destination);
        });
        if (dependencies_.shouldExit())
            return;
        OldCopies old;
        for (const fs::path& each : older)
            old.moveAway(each);
        old.moveAway(destination);
        copy->takePlace();
        old.areReplaced();
    } catch (const std::system_error& error) {
        fail(QString::fromStdString(error.what()));
        return;
    }
    if (!platform::removeAttribute(destination, "user.com.apple.quarantine"))
        QNLog(qnlog_warning, "The quarantine of %@ can't be removed: %@", destination.string(),
              std::strerror(errno));
    quitSelfAndLaunchApp(destination);
}

void QNAppInstaller::fail(const QString& reason) {
    QNLog(qnlog_error, "%@ copy failed: %@", name(), reason);
    Alert{.kind = Alert::Kind::critical,
          .title = Texts::tr("Copy Error"),
          .message = formatted(Texts::tr("%@ could not be copied. Please use the Finder to copy %@ "
                                         "from the install disk to your computer."),
                               name(), name()),
          .defaultButton = Texts::tr("Quit"),
          .details = reason}
        .run();
    dependencies_.terminate();
}

void QNAppInstaller::quitSelfAndLaunchApp(const fs::path& path) {
    std::string volume;
    if (trashInstallImage_)
        platform::guarded(kExceptionInVolumeQuery,
                          [&] { volume = platform::volumePathFor(dependencies_.bundle); });
    quitAndLaunch(path, volume);
}

/// The copy's own relauncher waits, since one on the image would keep that busy.
void QNAppInstaller::quitAndLaunch(const fs::path& path, const std::string& volume) {
    const fs::path own = path / relauncherInBundle;
    const fs::path relauncher = isThere(own) ? own : dependencies_.bundle / relauncherInBundle;
    std::vector<std::string> arguments{
        relauncher, std::to_string(::getpid()),
        std::to_string(platform::processStartTime(::getpid()).value_or(0)),
        path / "Contents/Linux" / bundleFacts(path).program};
    if (!volume.empty()) {
        arguments.emplace_back(std::string("-").append(installVolumeOption));
        arguments.push_back(volume);
    }
    if (const int error = dependencies_.start(arguments); error != 0) {
        QNLog(qnlog_error, "%@ can't be started: %@", path.string(), std::strerror(error));
        Alert{.kind = Alert::Kind::critical,
              .title = formatted(Texts::tr("%@ can't be started again"), name()),
              .message =
                  formatted(Texts::tr("Please start it from %@."), path.parent_path().string()),
              .defaultButton = Texts::tr("Quit"),
              .details = QString::fromLocal8Bit(std::strerror(error))}
            .run();
    }
    dependencies_.terminate();
}
