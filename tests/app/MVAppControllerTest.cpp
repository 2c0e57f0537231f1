#include "app/MVAppController.h"

#include "app/HelperPresence.h"
#include "app/ScriptedHelper.h"
#include "comm/MVCommSocketPath.h"
#include "install/MVInstallerController.h"
#include "model/AppVolumeController.h"
#include "model/MVCommAppValue.h"
#include "platform/bus/SingleInstance.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/qtloop/RunLoopNotifier.h"
#include "platform/window/Alert.h"
#include "support/ChildProcess.h"
#include "support/PrivateBus.h"
#include "support/ScopedVariable.h"
#include "support/ScriptedPlugin.h"
#include "support/WaitUntil.h"
#include "ui/VolumeMenu.h"
#include "ui/VolumeWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDBusConnection>
#include <QTimer>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <vector>

using platform::Alert;

namespace {

VolumeWindow* volumeWindow() {
    for (QWidget* const each : QApplication::topLevelWidgets()) {
        if (auto* const window = qobject_cast<VolumeWindow*>(each))
            return window;
    }
    return nullptr;
}

bool isLogShown() {
    return std::ranges::any_of(QApplication::topLevelWidgets(), [](const QWidget* each) {
        return each->isVisible() && each->windowTitle().endsWith(" Log");
    });
}

/// Reads the alerts instead of the user.
class Alerts final : public platform::AlertPresenter {
  public:
    Alerts() { platform::replaceAlertPresenter(this); }
    ~Alerts() override { platform::replaceAlertPresenter(nullptr); }

    void showOn(const Alert& alert, QWidget& /*window*/) override { shown.push_back(alert); }

    Alert::Button run(const Alert& alert) override {
        shown.push_back(alert);
        return Alert::alternate;
    }

    std::vector<Alert> shown;
};

/// Of a bundle. Whatever it installs is in the library of the tests.
MVInstallerController installerOf(const std::filesystem::path& bundle) {
    return MVInstallerController(
        {.terminate = [] { MVAppController::sharedController()->terminate(); },
         .restart = [] { return 0; },
         .mayReplace = [](const std::string&) { return true; },
         .bundlePath = QString::fromStdString(bundle),
         .localLibraryPath = MVInstallerController::localLibraryPath(),
         .pkexec = {}});
}

/// Of a start with damaged preferences and without a log.
void checkWhatIsTold(const std::vector<Alert>& alerts) {
    ASSERT_EQ(alerts.size(), 2U);
    EXPECT_EQ(alerts[0].title, "Your settings were damaged");
    EXPECT_EQ(alerts[0].kind, Alert::Kind::warning);
    const std::filesystem::path folder = platform::UserDefaults::standardPath().parent_path();
    const bool isNamed =
        std::ranges::any_of(std::filesystem::directory_iterator(folder), [&](const auto& file) {
            return file.path().string().find(".damaged-") != std::string::npos &&
                   QString(alerts[0].message)
                       .remove(QChar(0x2060))
                       .endsWith(QString::fromStdString(file.path()));
        });
    EXPECT_TRUE(isNamed) << alerts[0].message.toStdString();
    EXPECT_EQ(alerts[1].title, "The log can't be written");
    EXPECT_EQ(alerts[1].kind, Alert::Kind::warning);
    EXPECT_FALSE(alerts[1].message.contains("forg")) << "what is set is saved";
}

/// What the application does with its records, once it runs.
void showThatItUpdates() {
    support::ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(4711, "player");
    AppVolumeController& volumes = *AppVolumeController::sharedController();
    ASSERT_TRUE(support::waitUntil([&] { return !volumes.apps().isEmpty(); }));
    MVCommAppValue& app = *volumes.apps()[0];
    plugin.reportLevel(4711, 0.5F);
    EXPECT_TRUE(support::waitUntil([&] { return app.activity() == 50; }));
    app.setVolume(0.5);
    Q_EMIT qApp->applicationStateChanged(Qt::ApplicationActive);
    EXPECT_DOUBLE_EQ(app.volume(), 100.0) << "what is remembered, after a merge";
    plugin.disconnect();
    EXPECT_TRUE(support::waitUntil([&] { return volumes.apps().isEmpty(); }));
}

/// What the helper asks for when its icon is clicked.
void showThatAClickShows(VolumeWindow& window, const std::string& address) {
    support::BusConnection helper(address);
    window.hide();
    auto click = QDBusMessage::createMethodCall("com.quarnel.Tonvale", "/com/quarnel/Tonvale",
                                                "com.quarnel.Tonvale.Mixer", "ToggleWindow");
    click.setArguments({QString()});
    ASSERT_TRUE(helper->send(click));
    EXPECT_TRUE(support::waitUntil([&] { return window.isVisible(); }));
}

} // namespace

TEST(MVAppController, ServesItsWindowAndHidesItWhileAHelperCanShowItAgain) {
    const support::PrivateBus bus;
    const std::filesystem::path container =
        std::filesystem::path(std::getenv("HOME")) / "Library/Containers/a/Data";
    std::filesystem::create_directories(container);
    const std::filesystem::path preferencesFile = platform::UserDefaults::standardPath();
    std::filesystem::create_directories(preferencesFile.parent_path());
    std::ofstream(preferencesFile) << "<plist><dict>";
    const std::filesystem::path noFolder = preferencesFile.parent_path() / "file";
    std::ofstream(noFolder) << "no folder";
    const support::ScopedVariable noLogs("XDG_STATE_HOME", noFolder);
    Alerts alerts;
    platform::RunLoop loop;
    const platform::RunLoopNotifier notifier(loop);
    const platform::MainQueueService mainQueue(loop);
    MVAppController::initialize();
    const std::filesystem::path program = TONVALE_PROGRAM;
    MVInstallerController installer =
        installerOf(program.parent_path().parent_path().parent_path());
    MVAppController controller(platform::SingleInstance::acquire("com.quarnel.Tonvale"),
                               &installer);
    controller.awakeFromNib();
    ASSERT_EQ(MVAppController::sharedController(), &controller);
    controller.updateApps();
    const MVCommActivityMessage early{kMVCommActivity, 1, 0.5F};
    controller.handleActivity(&early); // both before there is anything behind it
    EXPECT_FALSE(std::filesystem::exists(container / kMVCommSocketName));
    controller.applicationDidFinishLaunching();
    EXPECT_TRUE(controller.launchComplete());
    checkWhatIsTold(alerts.shown);
    VolumeWindow* const window = volumeWindow();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());
    Q_EMIT window->menu().logWanted();
    EXPECT_TRUE(support::waitUntil(&isLogShown)) << "although there is no log";
    EXPECT_TRUE(std::filesystem::exists(container / kMVCommSocketName));
    showThatItUpdates();

    const HelperPresence presence(QDBusConnection::sessionBus()); // the controller knows it too
    ScriptedHelper helper(bus.address(), true);
    ASSERT_TRUE(support::waitUntil([&] { return presence.isShown(); }));
    EXPECT_FALSE(window->close());
    EXPECT_FALSE(window->isVisible());
    support::ChildProcess second({TONVALE_PROGRAM});
    EXPECT_EQ(second.wait(), 0) << second.output();
    EXPECT_TRUE(window->isVisible());
    showThatAClickShows(*window, bus.address());

    helper.setShown(false);
    ASSERT_TRUE(support::waitUntil([&] { return !presence.isShown(); }));
    QTimer::singleShot(0, window, [&] { EXPECT_TRUE(window->close()); });
    EXPECT_EQ(QApplication::exec(), 0);
    controller.applicationWillTerminate();
    EXPECT_EQ(volumeWindow(), nullptr);
    struct stat preferences {};
    ASSERT_EQ(::stat(platform::UserDefaults::standardPath().c_str(), &preferences), 0);
    EXPECT_EQ(preferences.st_mode & ALLPERMS, 0600U);
    EXPECT_TRUE(std::filesystem::exists(container / "com.quarnel.Tonvale.plist"));
}

TEST(MVAppController, EndsBeforeThereIsAWindowIfThePluginCannotBeInstalled) {
    const support::PrivateBus bus;
    Alerts alerts;
    platform::RunLoop loop;
    const platform::RunLoopNotifier notifier(loop);
    const platform::MainQueueService mainQueue(loop);
    MVInstallerController installer = installerOf("/nowhere");
    MVAppController controller(platform::SingleInstance::acquire("com.quarnel.Tonvale"),
                               &installer);
    controller.awakeFromNib();
    controller.applicationDidFinishLaunching();
    ASSERT_EQ(alerts.shown.size(), 1U);
    EXPECT_EQ(alerts.shown[0].title, "The installer is missing.");
    EXPECT_EQ(volumeWindow(), nullptr);
    EXPECT_FALSE(std::filesystem::exists(MVCommMainSocketPath()));
    controller.applicationWillTerminate();
}
