#include "app/LaunchSequence.h"

#include "app/MVAppController.h"
#include "comm/MVCommSocketPath.h"
#include "framework/crash/CrashReporterWindow.h"
#include "install/HelperInstallation.h"
#include "install/MVInstallerController.h"
#include "model/AppVolumeController.h"
#include "platform/bus/SingleInstance.h"
#include "platform/crash/CrashFolder.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/qtloop/RunLoopNotifier.h"
#include "platform/window/Alert.h"
#include "settings/PreferenceKeys.h"
#include "support/Files.h"
#include "support/PrivateBus.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/WaitUntil.h"
#include "ui/VolumeWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTimer>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

namespace fs = std::filesystem;
using platform::Alert;

namespace {

void write(const fs::path& file, const std::string& text) {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << text;
    fs::permissions(file, fs::perms::owner_all);
}

struct Loop {
    platform::RunLoop loop;
    const platform::RunLoopNotifier notifier{loop};
    const platform::MainQueueService mainQueue{loop};
};

/// A launch of the application beside a bundle and a local library of its own, and what can be seen
/// of it: each line is a step, with what has come about in it.
class LaunchSequenceTest : public testing::Test, private platform::AlertPresenter {
  protected:
    LaunchSequenceTest() {
        write(bundle_ / "Contents/PlugIns/Tonvale.plugin/Contents/Info.plist", "plug-in");
        write(bundle_ / "Contents/Helpers/TNInstaller",
              "#!/bin/sh\nprintf '\\006' >&2\nhead -c 1 >/dev/null\nmkdir -p \"${3%/*}\"\n"
              "rm -rf \"$3\"\ncp -r \"$2\" \"$3\"\necho '<plist version=\"1.0\"><dict>"
              "<key>MVInstallerErrorKey</key><integer>0</integer></dict></plist>'\n");
        write(helper() / "Contents/Info.plist", "helper");
        fs::create_directories(library());
        platform::replaceAlertPresenter(this);
        LaunchSequence::observe([this](const char* step) { noteStep(step); });
        MVAppController::initialize();
        forget({PreferenceKeys::lastLaunchPath, PreferenceKeys::messageLanguage});
        fs::create_directories(support_);
        for (const auto& each : fs::directory_iterator(support_))
            fs::remove_all(each);
    }

    void TearDown() override {
        LaunchSequence::observe(nullptr);
        platform::replaceAlertPresenter(nullptr);
        forget({PreferenceKeys::showInMenuBar});
    }

    static void forget(const QStringList& keys) {
        for (const QString& key : keys)
            platform::UserDefaults::standard().remove(key);
        platform::UserDefaults::standard().synchronize(std::chrono::seconds(10));
    }

    fs::path helper() const { return bundle_ / "Contents/Helpers/TonvaleHelper.app"; }
    fs::path library() const { return folder_.path() / "Library"; }
    fs::path installed() const { return library() / "Audio/Plug-Ins/HAL/Tonvale.plugin"; }

    /// From the start to the end; `whileRunning` comes in between.
    std::string launch() {
        const support::ScopedVariable place("TONVALE_LOCAL_LIBRARY", library());
        lines_.clear();
        static const auto& forever = *new Loop; // what serves the plug-ins stays bound to it
        static_cast<void>(forever);
        MVInstallerController installer(installerParts());
        MVAppController controller(platform::SingleInstance::acquire("com.quarnel.Tonvale"),
                                   &installer);
        controller.awakeFromNib();
        note(); // what has been there before
        events_.clear();
        controller.applicationDidFinishLaunching();
        if (whileRunning_)
            whileRunning_();
        std::string lines = lines_;
        controller.applicationWillTerminate();
        EXPECT_FALSE(fs::exists(MVCommMainSocketPath()));
        seen_.clear();
        return lines;
    }

    MVInstallerController::Dependencies installerParts() {
        return {.terminate = [] { MVAppController::sharedController()->terminate(); },
                .restart = [] { return 0; },
                .mayReplace = [this](const std::string&) { return mayReplace_; },
                .bundlePath = QString::fromStdString(bundle_),
                .localLibraryPath = QString::fromStdString(library()),
                .pkexec = folder_.path() / "pkexec",
                .helper = std::make_shared<HelperInstallation>(HelperInstallation::Dependencies{
                    .source = QString::fromStdString(helper()),
                    .destination = QString::fromStdString(support_ / "TonvaleHelper.app"),
                    .identifier = "org.example.none",
                    .loginItems =
                        platform::LoginItems({.own = folder_.path() / "autostart"}, "/bin/sh"),
                    .isWanted =
                        [] {
                            return platform::UserDefaults::standard().boolean(
                                PreferenceKeys::showInMenuBar);
                        },
                    .killProcess = [this](const QString&) { events_ += " ended-helper"; },
                    .launch =
                        [this](const QString&, const HelperInstallation::Launched& launched) {
                            events_ += " started-helper";
                            launched({});
                        }})};
    }

    bool mayReplace_ = true;
    std::function<void()> whileRunning_;
    const fs::path support_ = // of a program in no bundle
        fs::path(std::getenv("XDG_DATA_HOME")) / program_invocation_short_name;
    const support::PrivateFolder folder_;
    const fs::path bundle_ = folder_.path() / "Tonvale.app";

  private:
    Alert::Button run(const Alert& alert) override {
        events_ += " alert(" + alert.title.toStdString() + ")";
        return Alert::alternate;
    }

    void noteStep(const char* step) {
        note();
        lines_ += step + std::string(":") + std::exchange(events_, {}) + "\n";
    }

    /// Notes what has become true since the last time.
    void note() {
        const std::string file = support::contentOf(platform::UserDefaults::standardPath());
        const std::pair<const char*, bool> facts[] = {
            {"path-stored", file.find("LastLaunchPath") != std::string::npos},
            {"plug-in-installed", fs::exists(installed())},
            {"socket", fs::exists(MVCommMainSocketPath())},
            {"controller", AppVolumeController::sharedController() != nullptr},
            {"icon-file", fs::exists(support_ / "UseColorMenuBarIcon")},
            {"helper-installed", fs::exists(support_ / "TonvaleHelper.app")},
            {"window", isWindowShown()}};
        for (const auto& [name, isTrue] : facts) {
            if (isTrue && !seen_.contains(name))
                events_ += std::string(" ") + name;
            if (isTrue)
                seen_.insert(name);
        }
    }

    static bool isWindowShown() {
        return std::ranges::any_of(QApplication::topLevelWidgets(), [](const QWidget* each) {
            return each->isVisible() && qobject_cast<const VolumeWindow*>(each) != nullptr;
        });
    }

    const support::PrivateBus bus_;
    std::string events_;
    std::string lines_;
    std::set<std::string> seen_;
};

const std::string noConflict = "signals:\nrelocation:\nconflict check:\n";
const std::string firstSteps =
    noConflict + "launch path: path-stored\ninstall disk:\ncrash records:\n";
const std::string laterSteps = noConflict + "launch path:\ninstall disk:\ncrash records:\n";
const std::string rest = "preferences:\ndesktop:\n";
const std::string restartAlert = "alert(The new software requires that you restart your computer.)";

} // namespace

TEST_F(LaunchSequenceTest, OffersAReportThatWaitsOnceTheWindowIsThere) {
    EXPECT_NE(launch(), "") << "the plug-in is installed";
    write(fs::path(platform::crashFolder()) / "TonvaleHelper_2026-01-02-030405.crash", "report");
    const auto isOffered = [] {
        return std::ranges::any_of(QApplication::topLevelWidgets(), [](const QWidget* each) {
            return each->isVisible() && qobject_cast<const CrashReporterWindow*>(each) != nullptr;
        });
    };
    bool isOfferedAtOnce = true;
    bool isOfferedLater = false;
    whileRunning_ = [&] {
        isOfferedAtOnce = isOffered();
        isOfferedLater = support::waitUntil(isOffered);
    };
    const std::string steps = launch();
    EXPECT_NE(steps.find("crash reports:\nvolume window: window\n"), std::string::npos) << steps;
    EXPECT_FALSE(isOfferedAtOnce);
    EXPECT_TRUE(isOfferedLater);
    EXPECT_FALSE(isOffered()) << "it goes with the application";
}

TEST_F(LaunchSequenceTest, OfAFirstASecondAndAChangedPlugin) {
    EXPECT_EQ(launch(),
              firstSteps +
                  "installation: plug-in-installed\ncommunication: socket\n"
                  "volume controller: controller\nplug-in:\nhelper preference: icon-file\n"
                  "helper: ended-helper started-helper helper-installed\nrestart alert: " +
                  restartAlert + "\nvolume window: window\n" + rest);
    EXPECT_EQ(
        launch(),
        laterSteps +
            "installation:\n"
            "communication: socket\nvolume controller: controller\nplug-in:\n"
            "helper preference:\nhelper: started-helper\ncrash reports:\nvolume window: window\n" +
            rest);
    write(installed() / "Contents/Info.plist", "plug-iN");
    EXPECT_EQ(launch(), laterSteps +
                            "installation:\n"
                            "communication: socket\nvolume controller: controller\nplug-in:\n"
                            "helper preference:\nhelper: started-helper\nrestart alert: " +
                            restartAlert + "\nvolume window: window\n" + rest);
    EXPECT_EQ(support::contentOf(installed() / "Contents/Info.plist"), "plug-in");
}

TEST_F(LaunchSequenceTest, OfAConflictAndOfAnInstallationThatEndsTheProgram) {
    fs::create_directories(library() / "Audio/Plug-Ins/HAL/Mivo.plugin");
    EXPECT_EQ(launch(),
              "signals:\nrelocation:\nconflict check: alert(Mivo is not compatible with " +
                  QCoreApplication::applicationName().toStdString() + ".)\n");
    fs::remove_all(library() / "Audio");
    mayReplace_ = false;
    write(folder_.path() / "pkexec", "#!/bin/sh\nexit 126\n");
    EXPECT_EQ(launch(), firstSteps + "installation:\n") << "the question has been cancelled";
    fs::remove(bundle_ / "Contents/Helpers/TNInstaller");
    EXPECT_EQ(launch(), laterSteps + "installation: alert(The installer is missing.)\n");
}

TEST_F(LaunchSequenceTest, EndsWithoutWaitingForTheUserWhoIsAskedForAPassword) {
    mayReplace_ = false;
    const fs::path asked = folder_.path() / "asked";
    write(folder_.path() / "pkexec",
          "#!/bin/sh\ntouch '" + asked.string() + "'\nexec sleep 1000\n");
    QTimer ending;
    QObject::connect(&ending, &QTimer::timeout, [&] {
        if (fs::exists(asked))
            MVAppController::sharedController()->terminate();
    });
    ending.start(10);
    std::string lines;
    QTimer::singleShot(0, qApp, [&] { lines = launch(); });
    QApplication::exec();
    EXPECT_EQ(lines, firstSteps + "installation:\n");
}

TEST_F(LaunchSequenceTest, WithoutTheHelperAndWithoutPolkit) {
    platform::UserDefaults::standard().set(PreferenceKeys::showInMenuBar, false);
    mayReplace_ = false; // and there is no pkexec
    EXPECT_EQ(launch(), firstSteps +
                            "installation: alert(The audio plug-in can't be installed)\n"
                            "communication: socket\nvolume controller: controller\nplug-in:\n"
                            "helper preference: icon-file\nhelper: ended-helper\n"
                            "crash reports:\nvolume window: window\n" +
                            rest);
}

TEST_F(LaunchSequenceTest, InAHomeThatCannotBeWritten) {
    const fs::path config = platform::UserDefaults::standardPath().parent_path();
    fs::remove_all(config);
    write(config, "no folder");
    fs::remove_all(support_);
    write(support_, "no folder");
    const support::ScopedVariable state("XDG_STATE_HOME", config / "state");
    EXPECT_EQ(launch(),
              laterSteps +
                  "installation: plug-in-installed\n"
                  "communication: socket\nvolume controller: controller\nplug-in:\n"
                  "helper preference:\nhelper: ended-helper started-helper\nrestart alert: " +
                  restartAlert +
                  "\nvolume window: window\npreferences:\n"
                  "desktop: alert(Settings can't be saved) "
                  "alert(The log can't be written)\n");
    fs::remove(config);
    fs::remove(support_);
    fs::create_directories(config);
}
