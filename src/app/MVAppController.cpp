#include "app/MVAppController.h"

#include "app/ApplicationWindows.h"
#include "app/CommandLine.h"
#include "app/ConflictCheck.h"
#include "app/CrashReports.h"
#include "app/DesktopActions.h"
#include "app/FileAlerts.h"
#include "app/FinalSave.h"
#include "app/HelperPresence.h"
#include "app/HelperState.h"
#include "app/InstallDisk.h"
#include "app/LaunchRecord.h"
#include "app/MenuBarPreferences.h"
#include "app/PluginProblems.h"
#include "app/SupportInformation.h"
#include "app/WindowToggle.h"
#include "comm/MVComm.h"
#include "comm/MVCommLogText.h"
#include "comm/PluginBusClient.h"
#include "framework/log/qnlog.h"
#include "install/MVInstallerController.h"
#include "install/MenuEntries.h"
#include "look/theme/CurrentTheme.h"
#include "model/AppVolumeController.h"
#include "model/MVIgnoredApps.h"
#include "platform/base/Directories.h"
#include "platform/bundle/Bundle.h"
#include "platform/bus/SessionBus.h"
#include "platform/bus/SingleInstance.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/loop/RunLoop.h"
#include "platform/text/Texts.h"
#include "platform/window/WindowFront.h"
#include "remote/ControlService.h"
#include "settings/PreferenceKeys.h"
#include "ui/LetterTileColors.h"
#include "ui/VolumeMenu.h"
#include "ui/VolumeWindow.h"
#include "workspace/ImageWarningFilter.h"
#include "workspace/Workspace.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPixmap>

#include <csignal>
#include <cstdlib>
#include <utility>

namespace {

constexpr const char* processName = "Tonvale";
constexpr const char* helperProcessName = "TonvaleHelper";

MVAppController* shared = nullptr;

/// Warnings about other programs' images: logged in debug mode only, never on standard error.
void reportAboutImage(const QString& text) {
    if (shared != nullptr && shared->logHandle() != nullptr)
        shared->logWithLevel(qnlog_debug, "An icon is damaged: %@", MVCommLogText(text));
}

void dataCallback(const MVCommActivityMessage* message) {
    if (shared != nullptr)
        shared->handleActivity(message);
}

void updateCallback() {
    if (shared != nullptr)
        shared->updateApps();
}

} // namespace

void MVAppController::initialize() {
    Texts::load(platform::Bundle::main().resources() / "translations");
    FileAlerts::listen();
    ImageWarningFilter::setReporter(&reportAboutImage);
    platform::UserDefaults::standard().registerDefaults(PreferenceKeys::defaults());
}

MVAppController* MVAppController::sharedController() noexcept {
    return shared;
}

QString MVAppController::logURL() {
    const std::string folder = platform::logsDirectory();
    if (folder.empty())
        return {};
    return platform::formatted(QStringLiteral("%@/%@/%@.log"), folder, processName, processName);
}

MVAppController::MVAppController(std::unique_ptr<platform::SingleInstance> instance,
                                 MVInstallerController* installer)
    : instance_(std::move(instance))
    , installer_(installer != nullptr ? *installer : MVInstallerController::sharedController()) {
    const QString file = logURL();
    if (!file.isEmpty()) {
        const qsizetype slash = file.lastIndexOf(QLatin1Char('/'));
        createLogFile(file.mid(slash + 1), file.left(slash));
    }
    FileAlerts::logIsOpen();
    if (logHandle() && options().contains(CommandLine::debug))
        qnlog_setlevel(logHandle(), qnlog_debug);
}

MVAppController::~MVAppController() {
    FileAlerts::showWith(nullptr);
    shared = nullptr;
}

std::optional<QStringList> MVAppController::validOptions() const {
    return CommandLine::options();
}

void MVAppController::awakeFromNib() {
    shared = this;
    // Alerts come before the window, which follows the preference from then on.
    CurrentTheme::shared().setMoreContrast(
        platform::UserDefaults::standard().boolean(PreferenceKeys::moreContrast));
    std::atexit(&endWithoutDisplay);
}

void MVAppController::applicationDidFinishLaunching() {
    QNGUIApplication::applicationDidFinishLaunching();
    // Closing the window decides, not the last of all windows, which may be an alert's.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    launch_.run("signals", [this] { observeSignals(); });
    launch_.run("relocation", [] { InstallDisk::relocate(); });
    launch_.run("conflict check", [this] { refuseConflict(); });
    launch_.run("launch path", [] { LaunchRecord::store(); });
    launch_.run("install disk", [this] { notice_ = InstallDisk::finish(); });
    launch_.run("crash records", [this] { makeCrashReports(); });
    bool hasInstalled = false;
    launch_.run("installation", [&] { hasInstalled = installer_.install(); });
    launch_.run("communication", [this] { connectPlugins(); });
    launch_.run("volume controller", [this] { makeVolumeController(); });
    launch_.run("plug-in", [&] {
        if (pluginProblems_)
            pluginProblems_->runInstalledPlugin(hasInstalled);
    });
    launch_.run("helper preference", [] { updateTNHelperPref(); });
    launch_.run("helper", [this] { installer_.adjustHelperIfNecessary(); });
    launch_.run(hasInstalled ? "restart alert" : "crash reports", [&] {
        if (hasInstalled)
            installer_.runPostInstallAlert();
        else
            QMetaObject::invokeMethod(this, &MVAppController::checkCrashReports,
                                      Qt::QueuedConnection);
    });
    launch_.run("volume window", [this] {
        volumeController_->update();
        showMainWindow();
        if (!notice_.isEmpty())
            window_->tell(notice_);
    });
    launch_.run("preferences", [this] { observeMenuBarPreferences(); });
    launch_.run("desktop", [&] {
        serveDesktop();
        if (hasInstalled && crashReports_)
            crashReports_->begin(false);
    });
}

void MVAppController::makeCrashReports() {
    crashReports_ = std::make_unique<CrashReports>(CrashReports::Dependencies{
        platform::UserDefaults::standard(), logURL(),
        QStringList{QFileInfo(MVInstallerController::installerPath()).fileName(),
                    QString::fromLatin1(helperProcessName)}});
    installer_.onToolDied([this](const QString& tool, int signal) {
        if (crashReports_)
            crashReports_->reportSignal(tool, signal);
    });
}

void MVAppController::checkCrashReports() {
    static bool isChecked = false;
    if (crashReports_ && !std::exchange(isChecked, true))
        crashReports_->begin(true);
}

/// What nobody waits for, once the window is on its way to the screen.
void MVAppController::serveDesktop() {
    serveBus();
    connect(qApp, &QGuiApplication::applicationStateChanged, window_.get(),
            [this](Qt::ApplicationState state) {
                if (state == Qt::ApplicationActive)
                    volumeController_->update();
            });
    helper_ = std::make_unique<HelperPresence>(platform::sessionBus());
    showFileAlerts();
    actions_ = std::make_unique<DesktopActions>(
        DesktopActions::Dependencies{*volumeController_, [this] { showPrefs(); },
                                     [this](const QString& token) {
                                         applicationShouldHandleReopen(window_->isVisible(), token);
                                     }});
    actions_->serve(*instance_);
    actions_->performAtStart(options().value(CommandLine::action));
    SupportInformation::cleanUp();
}

void MVAppController::refuseConflict() {
    if (!ConflictCheck::isConflicting(MVInstallerController::localLibraryPath()))
        return;
    ConflictCheck::tell();
    terminate();
}

void MVAppController::observeMenuBarPreferences() {
    auto dependencies = MenuBarPreferences::sharedDependencies();
    dependencies.showHelper = [this](bool isShown) {
        helperState_->change(isShown);
        if (!isShown && !shouldExit() && !window_->isVisible())
            showMainWindow(); // nothing else could bring it back
    };
    menuBarPreferences_ = std::make_unique<MenuBarPreferences>(std::move(dependencies));
}

void MVAppController::makeVolumeController() {
    volumeController_ =
        std::make_unique<AppVolumeController>(AppVolumeController::sharedDependencies());
    volumeController_->savePrefs(); // containers are served by now, so their copies are due
    volumeController_->publisher().setSender([this](const auto& word, auto answered) {
        return pluginBus_ != nullptr && pluginBus_->tell(word, std::move(answered));
    });
    makeWindow();
    if (pluginProblems_)
        pluginProblems_->showIn(*window_);
}

void MVAppController::makeWindow() {
    colorLetterTiles(Workspace::shared());
    window_ = std::make_unique<VolumeWindow>(VolumeWindow::sharedDependencies(*volumeController_));
    window_->followContrast(platform::UserDefaults::standard());
    window_->installEventFilter(this);
    toggle_ = std::make_unique<WindowToggle>(*window_);
    installer_.onUninstalled([this] { removeWhatIsSetUp(); });
    helperState_ = std::make_unique<HelperState>(
        [this](bool isShown) { installer_.showHelperInMenuBar(isShown); },
        installer_.hasHelper()
            ? QString()
            : Texts::tr("This application isn't installed, so it keeps no icon in the menu bar."));
    windows_ = std::make_unique<ApplicationWindows>(*window_, *volumeController_,
                                                    helperState_.get(), logURL());
    connectMenu();
}

void MVAppController::connectMenu() {
    VolumeMenu& menu = window_->menu();
    connect(&menu, &QMenu::aboutToShow, this,
            [this, &menu] { menu.setCloses(helper_ != nullptr && helper_->isShown()); });
    connect(&menu, &VolumeMenu::preferencesWanted, this, &MVAppController::showPrefs);
    connect(&menu, &VolumeMenu::logWanted, this, &MVAppController::openLogViewer);
    connect(&menu, &VolumeMenu::recommendWanted, this, &MVAppController::referAFriend);
    connect(&menu, &VolumeMenu::uninstallWanted, this, &MVAppController::uninstall);
    connect(&menu, &VolumeMenu::aboutWanted, this, &MVAppController::showAbout);
    connect(&menu, &VolumeMenu::quitWanted, this, [this] { terminate(); });
}

/// What belongs to this user. With another local library, none of it is ours.
void MVAppController::removeWhatIsSetUp() {
    if (!MVInstallerController::usesBuiltInLibrary())
        return;
    if (pluginProblems_)
        pluginProblems_->removeInstalledPlugin();
    removeMenuEntries(platform::Bundle::main().contents().parent_path());
    MenuBarPreferences::removeTNHelperPref(MenuBarPreferences::sharedDependencies());
}

void MVAppController::serveBus() {
    control_ = std::make_unique<ControlService>(ControlService::Dependencies{
        *volumeController_,
        MVIgnoredApps::sharedInstance(),
        platform::UserDefaults::standard(),
        {.showWindow = [this] { applicationShouldHandleReopen(window_->isVisible(), {}); },
         .toggleWindow = [this](const QString& token) { toggleMainWindow(token); },
         .quit =
             [this] {
                 QMetaObject::invokeMethod(
                     this, [this] { terminate(); }, Qt::QueuedConnection);
             }},
        [this](const QString& caller) { return helper_ && helper_->isHelper(caller); }});
    instance_->serve(control_.get());
}

void MVAppController::showFileAlerts() {
    if (!logHandle())
        FileAlerts::logIsMissing(logURL());
    FileAlerts::showWith([this](const QString& title, const QString& message) {
        warningAlertWithTitle(title, message, Texts::tr("OK"));
    });
}

void MVAppController::observeSignals() {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        addObserver(this, "terminationSignal", signal);
}

void MVAppController::terminationSignal(int signal) {
    log("Ending on signal %d", signal);
    terminate();
}

/// The plug-in sends its reports as soon as it can connect.
void MVAppController::connectPlugins() {
    hearPlugin();
    MVComm& comm = MVComm::sharedComm();
    pluginProblems_ = std::make_unique<PluginProblems>(
        *platform::RunLoop::current(),
        PluginProblems::Dependencies{
            comm, [&comm] { return comm.setupPluginConnectionWithCallBack(&dataCallback); },
            [this](const QString& title, const QString& text) {
                alertWithTitle(title, text, Texts::tr("OK"));
            }});
    comm.setAppConnectCallback(&updateCallback);
    comm.setAppDisconnectCallback(&updateCallback);
}

/// There is a volume controller before the event loop brings the first report.
void MVAppController::hearPlugin() {
    pluginBus_ = std::make_unique<PluginBusClient>(
        PluginBusClient::Handlers{[this](std::uint32_t pid, const ProgramSetting& setting) {
                                      volumeController_->changedElsewhere(pid, setting);
                                  },
                                  [this](std::uint32_t pid, const QString& reason) {
                                      volumeController_->notControllable(pid, reason);
                                  },
                                  [this] { volumeController_->pluginHasGone(); },
                                  [this] {
                                      volumeController_->publisher().begin();
                                      findCrashesOfPlugin();
                                  }});
}

/// It may leave its records in other surroundings.
void MVAppController::findCrashesOfPlugin() {
    pluginBus_->askCrashFolder([this](const QString& folder) {
        if (crashReports_)
            crashReports_->addFolder(folder);
    });
}

/// When the display goes, the toolkit ends the process from within its event loop.
void MVAppController::endWithoutDisplay() {
    if (!shared || shared->shouldExit())
        return;
    shared->logWithLevel(qnlog_error, "The display was lost");
    shared->saveAndDisconnect();
}

void MVAppController::saveAndDisconnect() {
    FinalSave::saveAndDisconnect(volumeController_.get(), pluginProblems_ != nullptr);
}

void MVAppController::applicationShouldSave() {
    log("The session ends");
    FinalSave::save(volumeController_.get());
}

void MVAppController::applicationWillTerminate() {
    saveScreenshot();
    saveAndDisconnect();
    crashReports_.reset();
    pluginProblems_.reset();
    pluginBus_.reset();
    instance_->serve(nullptr);
    menuBarPreferences_.reset();
    control_.reset();
    toggle_.reset();
    actions_.reset();
    windows_.reset();
    window_.reset();
    volumeController_.reset();
}

/// Of the window as it was: when the toolkit quits, it closes visible windows first.
void MVAppController::saveScreenshot() {
    if (!window_ || std::exchange(isPictureTaken_, true) ||
        !options().contains(CommandLine::screenshot))
        return;
    const QString file = options().value(CommandLine::screenshot);
    window_->setUpdatesEnabled(true); // even if it is not visible
    if (!window_->grab().save(file, "PNG"))
        logWithLevel(qnlog_error, "Couldn't save the screenshot to %@", file);
}

bool MVAppController::applicationShouldHandleReopen(bool hasVisibleWindows, const QString& token) {
    log("Started again: showing the window");
    platform::useActivationToken(token);
    if (!hasVisibleWindows)
        window_->show();
    showMainWindow();
    return true;
}

void MVAppController::showPrefs() {
    windows_->showPreferences();
}

void MVAppController::showAbout() {
    windows_->showAbout();
}

void MVAppController::openLogViewer() {
    windows_->showLog(logHandle());
}

void MVAppController::referAFriend() {
    ApplicationWindows::recommend();
}

void MVAppController::uninstall() {
    installer_.uninstall(false);
}

void MVAppController::showMainWindow() {
    platform::bringToFront(*window_);
}

void MVAppController::toggleMainWindow(const QString& token) {
    if (!toggle_->letGo(helper_ && helper_->isShown()))
        applicationShouldHandleReopen(window_->isVisible(), token);
}

void MVAppController::updateTNHelperPref() {
    MenuBarPreferences::updateTNHelperPref(MenuBarPreferences::sharedDependencies());
}

void MVAppController::updateApps() {
    if (volumeController_)
        volumeController_->updateConnectionsSoon();
    if (pluginProblems_)
        pluginProblems_->connectionsChanged();
}

void MVAppController::handleActivity(const MVCommActivityMessage* message) {
    if (volumeController_)
        volumeController_->handleActivity(message);
}

/// A window that is closed comes back by the helper's icon; where that cannot be seen, the program
/// ends.
bool MVAppController::eventFilter(QObject* watched, QEvent* event) {
    const bool isClosing = watched == window_.get() && event->type() == QEvent::Close;
    if (isClosing && shouldExit())
        saveScreenshot();
    if (!isClosing || shouldExit())
        return QNGUIApplication::eventFilter(watched, event);
    if (!helper_ || !helper_->isShown()) {
        terminate();
        return false;
    }
    event->ignore();
    window_->hide();
    return true;
}
