#include "install/MVInstallerController.h"

#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "install/HelperInstallation.h"
#include "install/WindowsWithoutInput.h"
#include "platform/authorization/AuthorizationReason.h"
#include "platform/base/Directories.h"
#include "platform/bundle/Bundle.h"
#include "platform/bus/ProgramLauncher.h"
#include "platform/bus/SessionBus.h"
#include "platform/defaults/PropertyList.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/desktop/Restart.h"
#include "platform/files/DirectoryComparison.h"
#include "platform/processes/EndProcesses.h"
#include "platform/qtloop/WaitServingEvents.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"
#include "platform/window/Alert.h"
#include "settings/PreferenceKeys.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstring>

using platform::Alert;
using platform::formatted;
using platform::PrivilegedTool;

namespace {

constexpr const char* installMode = "i";
constexpr const char* uninstallMode = "u";
constexpr const char* pluginInBundle = "/" TONVALE_PLUGIN_IN_BUNDLE;
constexpr const char* toolInBundle = "/Contents/Helpers/TNInstaller";
constexpr const char* helperInBundle = "/Contents/Helpers/TonvaleHelper.app";
constexpr int internalCodes[] = {1, 2, 7};

QString mainBundlePath() {
    return QString::fromStdString(platform::Bundle::main().contents().parent_path());
}

void tellOfRefusedRestart(const QString& reason) {
    Alert{.kind = Alert::Kind::warning,
          .title = Texts::tr("The computer can't be restarted"),
          .message = reason,
          .defaultButton = Texts::tr("OK")}
        .run();
}

void launchHelper(const QString& program, HelperInstallation::Launched launched) {
    static platform::ProgramLauncher launcher(platform::sessionBus());
    launcher.launch({.name = QStringLiteral("com.quarnel.TonvaleHelper"), .program = program},
                    std::move(launched));
}

/// Null for a user without a folder for it, and with a local library of the environment's.
std::shared_ptr<HelperInstallation> usualHelper() {
    if (!MVInstallerController::usesBuiltInLibrary() ||
        QNApplication::current()->applicationSupportPath().isEmpty())
        return nullptr;
    const auto executable = platform::Bundle::main().text("CFBundleExecutable");
    return std::make_shared<HelperInstallation>(HelperInstallation::Dependencies{
        .source = MVInstallerController::helperSourceURL(),
        .destination = MVInstallerController::helperDestinationURL(),
        .loginItems = platform::LoginItems(platform::LoginItems::usualFolders(),
                                           mainBundlePath() + QLatin1String("/Contents/Linux/") +
                                               QString::fromStdString(executable)),
        .isWanted =
            [] {
                return platform::UserDefaults::standard().boolean(PreferenceKeys::showInMenuBar);
            },
        .killProcess = &MVInstallerController::killProcess,
        .launch = &launchHelper});
}

MVInstallerController::Dependencies usualDependencies() {
    return {.terminate = [] { QNApplication::current()->terminate(); },
            .restart = &MVInstallerController::restartComputer,
            .mayReplace = &platform::mayReplace,
            .bundlePath = mainBundlePath(),
            .localLibraryPath = MVInstallerController::localLibraryPath(),
            .pkexec = "/usr/bin/pkexec",
            .helper = usualHelper()};
}

} // namespace

MVInstallerController& MVInstallerController::sharedController() {
    static MVInstallerController shared(usualDependencies());
    return shared;
}

MVInstallerController::MVInstallerController(Dependencies dependencies)
    : dependencies_(std::move(dependencies))
    , sourcePaths_{pathInBundle(pluginInBundle)}
    , destPaths_{dependencies_.localLibraryPath + QLatin1String("/" TONVALE_PLUGIN_IN_LIBRARY)} {}

QString MVInstallerController::pathInBundle(const char* path) const {
    return dependencies_.bundlePath + QLatin1String(path);
}

QString MVInstallerController::helperSourceURL() {
    return mainBundlePath() + QLatin1String(helperInBundle);
}

QString MVInstallerController::helperDestinationURL() {
    const QFileInfo source(helperSourceURL());
    return QNApplication::current()->applicationSupportPath() + QLatin1Char('/') +
           source.fileName();
}

bool MVInstallerController::hasHelper() const {
    return dependencies_.helper != nullptr;
}

void MVInstallerController::adjustHelperIfNecessary() {
    if (dependencies_.helper)
        dependencies_.helper->adjustHelperIfNecessary();
}

void MVInstallerController::showHelperInMenuBar(bool isShown) {
    if (dependencies_.helper)
        dependencies_.helper->showHelperInMenuBar(isShown);
}

void MVInstallerController::uninstallHelper() {
    if (dependencies_.helper)
        dependencies_.helper->uninstallHelper();
}

QString MVInstallerController::localLibraryPath() {
    return QString::fromStdString(platform::localLibraryDirectory());
}

QString MVInstallerController::installerPath() {
    return mainBundlePath() + QLatin1String(toolInBundle);
}

QString MVInstallerController::pluginPath() {
    return mainBundlePath() + QLatin1String(pluginInBundle);
}

QString MVInstallerController::installedPluginPath() {
    return localLibraryPath() + QLatin1String("/" TONVALE_PLUGIN_IN_LIBRARY);
}

bool MVInstallerController::usesBuiltInLibrary() {
    return platform::localLibraryDirectory() == platform::builtInLocalLibraryDirectory();
}

std::optional<QStringList> MVInstallerController::filesToInstall() const {
    QStringList files;
    for (qsizetype i = 0; i < sourcePaths_.size(); ++i) {
        if (!platform::isDirectoryEqualToDirectory(sourcePaths_[i].toStdString(),
                                                   destPaths_[i].toStdString()))
            files.append(sourcePaths_[i]);
    }
    return files.isEmpty() ? std::nullopt : std::optional(files);
}

bool MVInstallerController::install() {
    const auto files = filesToInstall();
    return files && runInstaller(QLatin1String(installMode), *files);
}

QStringList MVInstallerController::argumentsFor(const QString& mode,
                                                const QStringList& files) const {
    QStringList arguments{pathInBundle(toolInBundle), mode};
    for (const QString& file : files) {
        arguments.append(file);
        if (mode == QLatin1String(installMode))
            arguments.append(destPaths_[sourcePaths_.indexOf(file)]);
    }
    return arguments;
}

MVInstallerController::Outcome MVInstallerController::runTool(const QStringList& arguments) {
    const bool isUninstall = arguments[1] == QLatin1String(uninstallMode);
    const QStringList targets = isUninstall ? arguments.mid(2) : destPaths_;
    const bool mayDoItself = std::ranges::all_of(targets, [this](const QString& each) {
        return dependencies_.mayReplace(each.toStdString());
    });
    std::vector<std::string> words;
    for (const QString& each : arguments)
        words.push_back(each.toStdString());
    PrivilegedTool tool(
        words, mayDoItself ? PrivilegedTool::Rights::own : PrivilegedTool::Rights::administrator,
        dependencies_.pkexec);
    Outcome outcome;
    const WindowsWithoutInput windows;
    platform::waitServingEvents(
        [&] {
            outcome.answer = tool.authorize();
            outcome.status = tool.status();
        },
        [&] { tool.cancel(); });
    if (outcome.answer != PrivilegedTool::Answer::granted)
        return outcome;
    if (const auto* const program = QNApplication::current(); program && program->shouldExit()) {
        outcome.answer = PrivilegedTool::Answer::cancelled; // the tool leaves everything as it is
        return outcome;
    }
    if (isUninstall)
        showHelperInMenuBar(false);
    platform::waitServingEvents([&] { outcome.reply = tool.run(); });
    tellIfDied(tool.status());
    return outcome;
}

void MVInstallerController::tellIfDied(int status) const {
    constexpr int bySignal = 128;
    if (status > bySignal)
        toolDied_(QFileInfo(installerPath()).fileName(), status - bySignal);
}

bool MVInstallerController::runInstaller(const QString& mode, const QStringList& files) {
    const bool isInstall = mode == QLatin1String(installMode);
    if (!QFile::exists(pathInBundle(toolInBundle))) {
        failAndQuit(Texts::tr("The installer is missing."),
                    Texts::tr("Please re-install the application."));
        return false;
    }
    const Outcome outcome = runTool(argumentsFor(mode, files));
    if (isRefused(outcome, isInstall))
        return false;
    return judge(outcome.reply, isInstall, isInstall ? sourcePaths_ : files);
}

/// Whether the tool has not run. Tells the user why, unless it was the user who cancelled.
bool MVInstallerController::isRefused(const Outcome& outcome, bool isInstall) {
    using Answer = PrivilegedTool::Answer;
    const bool mustEnd = outcome.answer == Answer::cancelled || outcome.answer == Answer::failed;
    if (outcome.answer == Answer::failed && !isInstall)
        explain(formatted(Texts::tr("Authorization error: %d"), outcome.status), {});
    else if (const QString reason = authorizationReason(outcome.answer); !reason.isEmpty())
        explain(isInstall ? Texts::tr("The audio plug-in can't be installed")
                          : Texts::tr("Tonvale can't be uninstalled"),
                reason);
    if (mustEnd && isInstall)
        dependencies_.terminate();
    return outcome.answer != Answer::granted;
}

void MVInstallerController::explain(const QString& title, const QString& reason) const {
    Alert{.kind = Alert::Kind::warning,
          .title = title,
          .message = reason,
          .defaultButton = Texts::tr("OK")}
        .run();
}

/// What the tool has replied; `items` are those that its index counts.
bool MVInstallerController::judge(const std::string& reply, bool isInstall,
                                  const QStringList& items) {
    const QString title =
        isInstall ? Texts::tr("Installation failed") : Texts::tr("Uninstall failed");
    const auto parsed = platform::parsePropertyList(QByteArray::fromStdString(reply));
    if (!parsed || parsed->typeId() != QMetaType::QVariantMap) {
        failAndQuit(title, Texts::tr("An unknown internal error has occurred."));
        return false;
    }
    const QVariantMap values = parsed->toMap();
    const int code = values.value(QStringLiteral("MVInstallerErrorKey")).toInt();
    if (code == 0)
        return true;
    const qlonglong index = values.value(QStringLiteral("MVInstallerIndexKey")).toLongLong();
    QString text;
    if (std::ranges::find(internalCodes, code) != std::end(internalCodes))
        text = formatted(Texts::tr("An internal error (%d) has occurred."), code);
    else if (index >= 0 && index < items.size())
        text = formatted(isInstall ? Texts::tr("Couldn't install \"%@\"")
                                   : Texts::tr("Couldn't uninstall \"%@\""),
                         QFileInfo(items[index]).fileName());
    failAndQuit(title, text);
    return false;
}

void MVInstallerController::failAndQuit(const QString& title, const QString& text) {
    Alert{.kind = Alert::Kind::critical,
          .title = title,
          .message = text,
          .defaultButton = Texts::tr("Quit")}
        .run();
    dependencies_.terminate();
}

void MVInstallerController::runPostInstallAlert() {
    const Alert alert{.title =
                          Texts::tr("The new software requires that you restart your computer."),
                      .message = Texts::tr("Please restart to load the newly installed files."),
                      .defaultButton = Texts::tr("Restart"),
                      .isGuarded = true};
    if (alert.run() == Alert::standard)
        restart();
}

void MVInstallerController::restart() {
    if (const int error = dependencies_.restart(); error != 0)
        tellOfRefusedRestart(QString::fromLocal8Bit(std::strerror(error)));
}

std::optional<QString> MVInstallerController::owningPackage() const {
    QFile file(pathInBundle("/Contents/Resources/package"));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return QString::fromUtf8(file.readLine(256)).trimmed();
}

void MVInstallerController::uninstall(bool terminateAfterwards) {
    const auto package = owningPackage();
    const Alert alert{
        .title = Texts::tr("Uninstall"),
        .message = Texts::tr(
            "This software requires that you restart your computer to complete the uninstall "
            "process. \n - Click on 'Uninstall' to uninstall and restart manually.  \n - Click on "
            "'Uninstall & Restart' to uninstall and restart now.  \n - Click 'Cancel' to uninstall "
            "at a later time."),
        .defaultButton = Texts::tr("Uninstall & Restart"),
        .alternateButton = Texts::tr("Cancel"),
        .otherButton = Texts::tr("Uninstall"),
        .details = formatted(Texts::tr("Your settings stay in\n%@\nand the logs in\n%@"),
                             platform::preferencesDirectory(), platform::logsDirectory())};
    const Alert::Button answer = alert.run();
    const QStringList paths =
        package ? destPaths_ : destPaths_ + QStringList{dependencies_.bundlePath};
    if (answer != Alert::alternate && runInstaller(QLatin1String(uninstallMode), paths)) {
        {
            const WindowsWithoutInput windows;
            uninstalled_();
        }
        if (package)
            explain(formatted(Texts::tr("Remove the package \"%@\""), *package),
                    Texts::tr("It contains the application itself."));
        if (answer == Alert::standard)
            restart();
        else
            dependencies_.terminate();
    }
    if (terminateAfterwards)
        dependencies_.terminate();
}

void MVInstallerController::killProcess(const QString& name) {
    platform::waitServingEvents([process = name.toStdString()] {
        if (!platform::endProcesses(process))
            QNLogText(qnlog_warning,
                      platform::formatted(QStringLiteral("%@ doesn't end"), process));
    });
}

int MVInstallerController::restartComputer() {
    return platform::requestRestart(platform::sessionBus(), platform::systemBus(),
                                    &tellOfRefusedRestart);
}
