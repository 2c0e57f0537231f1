#pragma once

#include "app/LaunchSequence.h"
#include "framework/application/QNGUIApplication.h"

#include "comm/MVCommMessages.h"

#include <memory>

class AppVolumeController;
class ApplicationWindows;
class ControlService;
class CrashReports;
class DesktopActions;
class HelperPresence;
class HelperState;
class MVInstallerController;
class MenuBarPreferences;
class PluginBusClient;
class PluginProblems;
class VolumeWindow;
class WindowToggle;

namespace platform {
class SingleInstance;

} // namespace platform

/// The application controller: owns the window and everything behind it, and handles the start, the
/// end, and a second start of the program. Main thread only.
class MVAppController final : public QNGUIApplication {
    Q_OBJECT

  public:
    /// Registers the defaults of the preferences. Call it once, before there is a controller.
    static void initialize();

    /// The controller whose interface has been created; null before.
    static MVAppController* sharedController() noexcept;

    /// The log file: "Tonvale/Tonvale.log" in the user's folder of logs. Empty without such a
    /// folder.
    static QString logURL();

    /// Opens the log file. `instance` ensures that no other instance runs. `installer`, null for
    /// the shared one, must outlive the controller.
    explicit MVAppController(std::unique_ptr<platform::SingleInstance> instance,
                             MVInstallerController* installer = nullptr);
    ~MVAppController() override;

    std::optional<QStringList> validOptions() const override;
    void awakeFromNib() override;

    /// Installs the plug-in if needed, and shows the window. The program ends instead if another
    /// plug-in is in the way, or if the plug-in cannot be installed.
    void applicationDidFinishLaunching() override;

    /// Saves the settings, and waits for the disk for a limited time.
    void applicationShouldSave() override;

    /// Saves the settings and the window's frame, then closes the sockets. Waits for the disk for a
    /// limited time.
    void applicationWillTerminate() override;

    /// Shows the window if it is not visible. `token` is the desktop's activation token for
    /// bringing it to the front.
    bool applicationShouldHandleReopen(bool hasVisibleWindows, const QString& token);
    void showMainWindow();

    /// A click on the tray icon: hides the window if it is in front, else shows it by the desktop's
    /// activation token.
    void toggleMainWindow(const QString& token);

    /// Writes the helper's preference file; see MenuBarPreferences.
    static void updateTNHelperPref();

    /// Show windows of their own; each is created on the first call.
    void showPrefs();
    void showAbout();
    void openLogViewer();

    /// Opens the page to recommend the program with, if the bundle names one.
    static void referAFriend();

    /// Asks the user, and removes what has been installed; see MVInstallerController.
    void uninstall();

    /// Offers the crash reports that are new, and from now on those that come. Only the first call
    /// in a process counts.
    void checkCrashReports();

    /// The façade's callbacks, called at any time.
    void updateApps();
    void handleActivity(const MVCommActivityMessage* message);

    /// Handles a signal that asks the program to end.
    Q_INVOKABLE void terminationSignal(int signal);

  private:
    bool eventFilter(QObject* watched, QEvent* event) override;

    void observeSignals();
    void refuseConflict();
    void makeCrashReports();
    void connectPlugins();
    void makeVolumeController();
    void makeWindow();
    void connectMenu();
    void observeMenuBarPreferences();
    void serveDesktop();
    void removeWhatIsSetUp();
    void serveBus();
    void hearPlugin();
    void findCrashesOfPlugin();
    void showFileAlerts();
    static void endWithoutDisplay();
    void saveAndDisconnect();
    void saveScreenshot();

    const std::unique_ptr<platform::SingleInstance> instance_;
    MVInstallerController& installer_;
    const LaunchSequence launch_{[this] { return shouldExit(); }};
    QString notice_; // what the window says once it is shown
    std::unique_ptr<AppVolumeController> volumeController_;
    std::unique_ptr<VolumeWindow> window_; // its view
    std::unique_ptr<WindowToggle> toggle_;
    std::unique_ptr<ApplicationWindows> windows_; // all others
    std::unique_ptr<DesktopActions> actions_;
    std::unique_ptr<CrashReports> crashReports_;
    std::unique_ptr<ControlService> control_;
    std::unique_ptr<PluginBusClient> pluginBus_;
    std::unique_ptr<PluginProblems> pluginProblems_;
    std::unique_ptr<HelperPresence> helper_;
    std::unique_ptr<HelperState> helperState_;
    std::unique_ptr<MenuBarPreferences> menuBarPreferences_;
    bool isPictureTaken_ = false;
};
