#include "app/MVAppController.h"

#include "app/CommandLine.h"
#include "app/FileAlerts.h"
#include "app/HelperPresence.h"
#include "app/HelperState.h"
#include "app/MenuBarPreferences.h"
#include "app/PluginProblems.h"
#include "app/SupportInformation.h"
#include "app/WindowToggle.h"
#include "comm/MVComm.h"
#include "comm/MVCommLogText.h"
#include "comm/PluginBusClient.h"
#include "framework/application/ExceptionPlaces.h"
#include "framework/log/qnlog.h"
#include "framework/logviewer/QNLogTableViewer.h"
#include "framework/preferences/QNPreferencesWindowController.h"
#include "install/MVInstallerController.h"
#include "install/MenuEntries.h"
#include "look/theme/CurrentTheme.h"
#include "look/window/MVCustomWindow.h"
#include "model/AppVolumeController.h"
#include "model/MVIgnoredApps.h"
#include "platform/base/Directories.h"
#include "platform/base/ExceptionReport.h"
#include "platform/bundle/Bundle.h"
#include "platform/bus/SessionBus.h"
#include "platform/bus/SingleInstance.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/language/MessageLanguages.h"
#include "platform/loop/RunLoop.h"
#include "platform/text/Texts.h"
#include "platform/window/BundleImage.h"
#include "platform/window/WindowFront.h"
#include "remote/ControlService.h"
#include "settings/PreferenceKeys.h"
#include "ui/VolumeWindow.h"
#include "ui/preferences/MVPrefsGeneral.h"
#include "ui/preferences/MVPrefsIgnored.h"
#include "workspace/ImageWarningFilter.h"
#include "workspace/Workspace.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QPixmap>
#include <QWindow>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <utility>

using platform::UserDefaults;

namespace {

constexpr const char* processName = "Tonvale";
constexpr std::chrono::seconds longestSaving{3};

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
    UserDefaults::standard().registerDefaults(PreferenceKeys::defaults());
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
    std::atexit(&endWithoutDisplay);
}

/// One step may fail. None begins once the program has been told to end, which the waits in some of
/// them let happen.
void MVAppController::step(const std::function<void()>& work) const {
    if (!shouldExit())
        platform::guarded(kExceptionInLaunchStep, work);
}

void MVAppController::applicationDidFinishLaunching() {
    QNGUIApplication::applicationDidFinishLaunching();
    // Closing the window decides, not the last of all windows, which may be an alert's.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    step([this] { observeSignals(); });
    step([] { storeLaunch(); });
    bool hasInstalled = false;
    step([&] { hasInstalled = installer_.install(); });
    if (!shouldExit())
        launch(hasInstalled);
}

void MVAppController::launch(bool hasInstalled) {
    makeWindow();
    step([this] { hearPlugin(); }); // it sends its reports as soon as it can connect
    step([this] { connectPlugins(); });
    step([&] {
        if (pluginProblems_)
            pluginProblems_->runInstalledPlugin(hasInstalled);
    });
    step([this] { keepHelper(); });
    if (hasInstalled)
        step([this] { installer_.runPostInstallAlert(); });
    step([this] { volumeController_->update(); });
    step([this] { showMainWindow(); });
    step([this] { serveBus(); });
    step([this] { updateWhenActive(); });
    step([this] { helper_ = std::make_unique<HelperPresence>(platform::sessionBus()); });
    step([this] { observeMenuBarPreferences(); });
    step([this] { showFileAlerts(); });
    step([] { SupportInformation::cleanUp(); });
}

void MVAppController::keepHelper() {
    updateTNHelperPref();
    installer_.adjustHelperIfNecessary();
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

/// A plug-in that connects finds the language on the disk, and a helper the bundle.
void MVAppController::storeLaunch() {
    UserDefaults& defaults = UserDefaults::standard();
    const auto store = [&](const QString& key, const std::string& value) {
        const QString text = QString::fromStdString(value);
        const bool isNew = defaults.text(key) != text;
        if (isNew)
            defaults.set(key, text);
        return isNew;
    };
    bool isNew =
        store(PreferenceKeys::lastLaunchPath, platform::Bundle::main().contents().parent_path());
    isNew |= store(PreferenceKeys::messageLanguage, platform::messageLanguage());
    if (isNew)
        defaults.synchronize(longestSaving);
}

void MVAppController::colorTiles() {
    const MVBlackTheme& theme = CurrentTheme::theme();
    Workspace::shared().setTileColors(
        {theme.windowTitleBarGradientColor2(), theme.windowTitleBarTextColor()});
}

void MVAppController::makeWindow() {
    colorTiles();
    connect(&CurrentTheme::shared(), &CurrentTheme::changed, this, &MVAppController::colorTiles);
    volumeController_ =
        std::make_unique<AppVolumeController>(AppVolumeController::sharedDependencies());
    volumeController_->savePrefs(); // containers are served by now, so their copies are due
    window_ = std::make_unique<VolumeWindow>(VolumeWindow::sharedDependencies(*volumeController_));
    window_->setWindowIcon(platform::bundleIcon(QStringLiteral("tonvale")));
    window_->installEventFilter(this);
    toggle_ = std::make_unique<WindowToggle>(*window_);
    connect(window_.get(), &VolumeWindow::logWanted, this, &MVAppController::openLogViewer);
    connect(window_.get(), &VolumeWindow::quitWanted, this, [this] { terminate(); });
    connect(window_.get(), &VolumeWindow::supportWanted, this,
            [this] { SupportInformation::show(*window_, logURL()); });
    connect(window_.get(), &VolumeWindow::uninstallWanted, this,
            [this] { installer_.uninstall(false); });
    installer_.onUninstalled([this] { removeWhatIsSetUp(); });
    helperState_ = std::make_unique<HelperState>(
        [this](bool isShown) { installer_.showHelperInMenuBar(isShown); },
        installer_.hasHelper()
            ? QString()
            : Texts::tr("This application isn't installed, so it keeps no icon in the menu bar."));
    connect(window_.get(), &VolumeWindow::preferencesWanted, this, &MVAppController::showPrefs);
    hearInstance();
}

/// What belongs to this user. With another local library, none of it is ours.
void MVAppController::removeWhatIsSetUp() {
    if (!MVInstallerController::usesBuiltInLibrary())
        return;
    if (pluginProblems_)
        pluginProblems_->removeInstalledPlugin();
    removeMenuEntries();
    MenuBarPreferences::removeTNHelperPref(MenuBarPreferences::sharedDependencies());
}

/// Further starts, and the desktop.
void MVAppController::hearInstance() {
    instance_->onActivation([this](const QString& token) {
        applicationShouldHandleReopen(window_->isVisible(), token);
    });
    instance_->onAction(
        [this](const QString& action, const QString& token) { return doAction(action, token); });
}

bool MVAppController::doAction(const QString& action, const QString& token) {
    if (action != QLatin1String("preferences"))
        return false;
    useActivationToken(token);
    showPrefs();
    return true;
}

void MVAppController::serveBus() {
    control_ = std::make_unique<ControlService>(ControlService::Dependencies{
        *volumeController_,
        MVIgnoredApps::sharedInstance(),
        UserDefaults::standard(),
        {.showWindow = [this] { applicationShouldHandleReopen(window_->isVisible(), {}); },
         .toggleWindow = [this](const QString& token) { toggleMainWindow(token); },
         .quit =
             [this] {
                 QMetaObject::invokeMethod(
                     this, [this] { terminate(); }, Qt::QueuedConnection);
             }}});
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

void MVAppController::connectPlugins() {
    MVComm& comm = MVComm::sharedComm();
    comm.setAppConnectCallback(&updateCallback);
    comm.setAppDisconnectCallback(&updateCallback);
    pluginProblems_ = std::make_unique<PluginProblems>(
        *platform::RunLoop::current(),
        PluginProblems::Dependencies{
            comm, *window_,
            [&comm] { return comm.setupPluginConnectionWithCallBack(&dataCallback); },
            [this](const QString& title, const QString& text) {
                alertWithTitle(title, text, Texts::tr("OK"));
            }});
}

void MVAppController::hearPlugin() {
    AppVolumeController& controller = *volumeController_;
    pluginBus_ = std::make_unique<PluginBusClient>(PluginBusClient::Handlers{
        [&](std::uint32_t pid, const ProgramSetting& setting) {
            controller.changedElsewhere(pid, setting);
        },
        [&](std::uint32_t pid, const QString& reason) { controller.notControllable(pid, reason); },
        [&] { controller.pluginHasGone(); }, [&] { controller.publisher().begin(); }});
    controller.publisher().setSender([this](const auto& word, auto answered) {
        return pluginBus_ != nullptr && pluginBus_->tell(word, std::move(answered));
    });
}

void MVAppController::updateWhenActive() {
    connect(qApp, &QGuiApplication::applicationStateChanged, window_.get(),
            [this](Qt::ApplicationState state) {
                if (state == Qt::ApplicationActive)
                    volumeController_->update();
            });
}

/// When the display goes, the toolkit ends the process from within its event loop.
void MVAppController::endWithoutDisplay() {
    if (!shared || shared->shouldExit())
        return;
    shared->logWithLevel(qnlog_error, "The display was lost");
    shared->saveAndDisconnect();
}

/// When a disk hangs, no other file is touched, for that might never end. The kernel closes the
/// sockets too, and the next start replaces their files.
void MVAppController::saveAndDisconnect() {
    if (volumeController_ && !volumeController_->shutdown(longestSaving))
        return;
    if (volumeController_) // else there are no sockets yet
        MVComm::sharedComm().shutdown();
    UserDefaults::standard().synchronize(longestSaving);
}

void MVAppController::applicationWillTerminate() {
    setShouldExit();
    if (window_ && options().contains(CommandLine::screenshot))
        saveScreenshot();
    saveAndDisconnect();
    pluginProblems_.reset();
    pluginBus_.reset();
    instance_->serve(nullptr);
    menuBarPreferences_.reset();
    control_.reset();
    toggle_.reset();
    prefs_.reset();
    logViewer_.reset();
    window_.reset();
    volumeController_.reset();
}

void MVAppController::saveScreenshot() {
    const QString file = options().value(CommandLine::screenshot);
    window_->setUpdatesEnabled(true); // even if it is not visible
    if (!window_->grab().save(file, "PNG"))
        logWithLevel(qnlog_error, "Couldn't save the screenshot to %@", file);
}

bool MVAppController::applicationShouldHandleReopen(bool hasVisibleWindows, const QString& token) {
    log("Started again: showing the window");
    useActivationToken(token);
    if (!hasVisibleWindows)
        window_->show();
    showMainWindow();
    return true;
}

/// Qt takes the token from there when a window asks to come to the front.
void MVAppController::useActivationToken(const QString& token) {
    if (!token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
}

void MVAppController::showPrefs() {
    if (prefs_ == nullptr) {
        prefs_ = std::make_unique<QNPreferencesWindowController>(QStringLiteral("Prefs"));
        prefs_->window().setWindowIcon(window_->windowIcon());
        prefs_->addController(QNPreferencesItemViewController::controller<MVPrefsGeneral>(
            MVPrefsGeneral::Dependencies{UserDefaults::standard(),
                                         volumeController_->rememberedApps(), helperState_.get()}));
        prefs_->addController(QNPreferencesItemViewController::controller<MVPrefsIgnored>(
            MVPrefsIgnored::Dependencies{
                MVIgnoredApps::sharedInstance(), Workspace::shared(),
                [this] { return knownPrograms(*volumeController_, Workspace::shared()); }}));
    }
    prefs_->showWindow();
}

void MVAppController::showMainWindow() {
    platform::bringToFront(*window_);
}

void MVAppController::toggleMainWindow(const QString& token) {
    if (toggle_->goesAway() && helper_ && helper_->isShown())
        window_->hide();
    else if (toggle_->goesAway())
        window_->showMinimized();
    else
        applicationShouldHandleReopen(window_->isVisible(), token);
}

void MVAppController::updateTNHelperPref() {
    MenuBarPreferences::updateTNHelperPref(MenuBarPreferences::sharedDependencies());
}

void MVAppController::openLogViewer() {
    if (!logViewer_) {
        logViewer_ = QNLogTableViewer::logViewerWithHandle(logHandle());
        logViewer_->window()->setWindowIcon(window_->windowIcon());
    }
    logViewer_->showWindow();
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
    if (watched != window_.get() || event->type() != QEvent::Close || shouldExit())
        return QNGUIApplication::eventFilter(watched, event);
    if (!helper_ || !helper_->isShown()) {
        terminate();
        return false;
    }
    event->ignore();
    window_->hide();
    return true;
}
