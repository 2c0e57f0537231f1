#pragma once

#include "framework/application/QNGUIApplication.h"

#include "comm/MVCommMessages.h"

#include <memory>

class AppVolumeController;
class ControlService;
class PluginProblems;
class VolumeWindow;

class PluginBusClient;

namespace platform {
class BusNameWatch;
class SingleInstance;

} // namespace platform

/// The application: owns the window and what is behind it, and knows what happens at the
/// start, at the end, and when a person starts the program again. Main thread only.
class MVAppController final : public QNGUIApplication {
    Q_OBJECT

  public:
    /// Registers the defaults of the preferences. To be called once, before there is a controller.
    static void initialize();

    /// The controller whose interface has been made; null before.
    static MVAppController* sharedController() noexcept;

    /// The log file: "Tonvale/Tonvale.log" in the user's folder of logs. Empty without such a
    /// folder.
    static QString logURL();

    /// Opens the log file. `instance` is what makes this the only one that runs.
    explicit MVAppController(std::unique_ptr<platform::SingleInstance> instance);
    ~MVAppController() override;

    std::optional<QStringList> validOptions() const override;
    void awakeFromNib() override;
    void applicationDidFinishLaunching() override;

    /// What has been set and the window, then the sockets. Waits for a disk, but not for ever.
    void applicationWillTerminate() override;

    /// Shows the window if it is not visible. `token` is the desktop's leave to come to the front.
    bool applicationShouldHandleReopen(bool hasVisibleWindows, const QString& token);
    void showMainWindow();

    /// What the façade calls, at any time.
    void updateApps();
    void handleActivity(const MVCommActivityMessage* message);

    /// A signal that asks the program to end.
    Q_INVOKABLE void terminationSignal(int signal);

  private:
    bool eventFilter(QObject* watched, QEvent* event) override;

    void observeSignals();
    static void storeMessageLanguage();
    void makeWindow();
    static void colorTiles();
    void serveBus();
    void connectPlugins();
    void hearPlugin();
    void updateWhenActive();
    void showFileAlerts();
    static void endWithoutDisplay();
    void saveAndDisconnect();
    void saveScreenshot();

    const std::unique_ptr<platform::SingleInstance> instance_;
    std::unique_ptr<AppVolumeController> volumeController_;
    std::unique_ptr<VolumeWindow> window_; // its view
    std::unique_ptr<ControlService> control_;
    std::unique_ptr<PluginBusClient> pluginBus_;
    std::unique_ptr<PluginProblems> pluginProblems_;
    std::unique_ptr<platform::BusNameWatch> helper_;
};
