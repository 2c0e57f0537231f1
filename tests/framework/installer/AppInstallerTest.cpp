#include "framework/installer/QNAppInstaller.h"

#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/window/Alert.h"
#include "support/Files.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/SystemLogRecorder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;
using platform::Alert;

namespace {

class Answer final : public platform::AlertPresenter {
  public:
    Answer() { platform::replaceAlertPresenter(this); }
    ~Answer() override { platform::replaceAlertPresenter(nullptr); }

    Alert::Button run(const Alert& alert) override {
        shown.push_back(alert);
        return button;
    }

    Alert::Button button = Alert::standard;
    std::vector<Alert> shown;
};

fs::path makeBundle(const fs::path& path, const std::string& version,
                    const std::string& identifier = "org.example.App") {
    fs::create_directories(path / "Contents/Helpers");
    std::ofstream(path / "Contents/Helpers/TonvaleRelauncher") << "";
    std::ofstream(path / "Contents/Info.plist")
        << "<plist><dict><key>CFBundleIdentifier</key><string>" << identifier
        << "</string><key>CFBundleName</key><string>App</string><key>CFBundleExecutable</key>"
        << "<string>app</string><key>CFBundleShortVersionString</key><string>" << version
        << "</string></dict></plist>";
    return path;
}

class AppInstallerTest : public testing::Test {
  protected:
    AppInstallerTest() { fs::create_directories(folder_.path() / "local apps"); }

    bool isInstalled(const std::string& version) const {
        return bundleFacts(place_).version == version;
    }

    const support::PrivateFolder folder_;
    const support::ScopedVariable home_{"HOME", folder_.path()};
    const support::ScopedVariable data_{"XDG_DATA_HOME", folder_.path() / "data"};
    const support::ScopedVariable apps_{"TONVALE_LOCAL_APPLICATIONS",
                                        folder_.path() / "local apps"};
    const support::SystemLogRecorder log_;
    const fs::path bundle_ = makeBundle(folder_.path() / "disk/App.app", "1.9");
    const fs::path place_ = folder_.path() / "local apps/App.app";
    Answer answer_;
    bool hasEnded_ = false;
    std::vector<std::string> started_;
    QNAppInstaller installer_{{.bundle = bundle_,
                               .terminate = [this] { hasEnded_ = true; },
                               .shouldExit = [this] { return hasEnded_; },
                               .start =
                                   [this](const std::vector<std::string>& arguments) {
                                       started_ = arguments;
                                       return 0;
                                   }}};
};

} // namespace

TEST_F(AppInstallerTest, AsksUnlessSilentAndDoesWhatIsChosen) {
    struct Case {
        bool isRequired;
        const char* upgrade;
        const char* prompt;
        Alert::Button answer;
        const char* title;
        const char* message;
        const char* button;
        const char* others;
        bool isCopied;
        bool isEnded;
    };
    const char* const usual =
        "App appears to be running from an install disk. It is highly recommended that you copy "
        "App to your computer and open it from there; if launched from an external disk, then that "
        "disk must always be available when using App.";
    const char* const copy = "Copy to the local apps Folder and Relaunch";
    for (const Case& each :
         {Case{false, "", "", Alert::alternate, "Copy to Computer?", usual, copy, "Continue Quit",
               false, false},
          Case{false, "", "", Alert::other, "Copy to Computer?", usual, copy, "Continue Quit",
               false, true},
          Case{false, "/none", "Now?", Alert::standard, "Copy to Computer?", "Now?",
               "Update in the local apps Folder and Relaunch", "Continue Quit", true, true},
          Case{true, "", "", Alert::standard, "Copy to Computer",
               "App will be copied to the local apps folder.", copy, " ", true, true}}) {
        fs::remove_all(place_);
        answer_.shown.clear();
        started_.clear();
        hasEnded_ = false;
        answer_.button = each.answer;
        installer_.setRequiredInstall(each.isRequired);
        installer_.setPromptMessage(each.prompt);
        installer_.installWithUpgradePath(each.upgrade);
        ASSERT_EQ(answer_.shown.size(), 1U);
        const Alert& alert = answer_.shown[0];
        EXPECT_EQ(alert.title, each.title);
        EXPECT_EQ(alert.message, each.message);
        EXPECT_EQ(alert.defaultButton, each.button);
        EXPECT_EQ(alert.alternateButton + ' ' + alert.otherButton, each.others);
        EXPECT_EQ(isInstalled("1.9"), each.isCopied);
        EXPECT_EQ(hasEnded_, each.isEnded);
        EXPECT_EQ(started_.empty(), !each.isCopied);
    }
}

TEST_F(AppInstallerTest, ASilentInstallerStartsTheCopyByItsOwnRelauncherWithTheVolume) {
    installer_.setSilentInstall(true);
    makeBundle(folder_.path() / "old/App.app", "1.0");
    makeBundle(place_, "1.8");
    installer_.installWithUpgradePath(folder_.path() / "old/App.app");
    EXPECT_TRUE(answer_.shown.empty());
    EXPECT_TRUE(isInstalled("1.9"));
    EXPECT_EQ(bundleFacts(folder_.path() / "data/Trash/files/App.app").version, "1.0");
    EXPECT_EQ(bundleFacts(folder_.path() / "data/Trash/files/App 2.app").version, "1.8");
    ASSERT_EQ(started_.size(), 6U);
    EXPECT_EQ(started_[0], place_ / "Contents/Helpers/TonvaleRelauncher");
    EXPECT_EQ(started_[1], std::to_string(::getpid()));
    EXPECT_EQ(started_[3], place_ / "Contents/Linux/app");
    EXPECT_EQ(started_[4], "-QNInstallVolume");
    EXPECT_TRUE(bundle_.string().starts_with(started_[5])) << started_[5];
    installer_.setTrashInstallImage(false);
    installer_.quitSelfAndLaunchApp(place_);
    EXPECT_EQ(started_.size(), 4U);
}

TEST_F(AppInstallerTest, ANewerCopyIsReplacedOnlyIfTheUserWantsIt) {
    installer_.setSilentInstall(true);
    makeBundle(place_, "1.10");
    answer_.button = Alert::alternate;
    installer_.installWithUpgradePath({});
    EXPECT_TRUE(isInstalled("1.10"));
    ASSERT_EQ(started_.size(), 4U) << "the newer one, which does not touch the image";
    EXPECT_EQ(started_[3], place_ / "Contents/Linux/app");
    hasEnded_ = false;
    answer_.button = Alert::standard;
    installer_.installWithUpgradePath({});
    EXPECT_TRUE(isInstalled("1.9"));
    EXPECT_EQ(answer_.shown.size(), 2U);
    EXPECT_EQ(bundleFacts(folder_.path() / "data/Trash/files/App.app").version, "1.10");
}

TEST_F(AppInstallerTest, AFailureTellsWhyAndChangesNothing) {
    installer_.setSilentInstall(true);
    makeBundle(place_, "1.0");
    ASSERT_EQ(::mkfifo((bundle_ / "pipe").c_str(), 0600), 0);
    installer_.installWithUpgradePath({});
    EXPECT_TRUE(isInstalled("1.0"));
    EXPECT_TRUE(hasEnded_);
    EXPECT_TRUE(started_.empty());
    ASSERT_EQ(answer_.shown.size(), 1U);
    EXPECT_EQ(answer_.shown[0].title, "Copy Error");
    EXPECT_EQ(answer_.shown[0].message,
              "App could not be copied. Please use the Finder to copy App from the install disk to "
              "your computer.");
    EXPECT_EQ(answer_.shown[0].defaultButton, "Quit");
    EXPECT_TRUE(answer_.shown[0].details.contains("Invalid argument"));
    EXPECT_EQ(log_.count("App copy failed: "), 1U);
}

TEST_F(AppInstallerTest, FindsTheNewestOtherCopyInBothFolders) {
    const fs::path own = folder_.path() / "Applications";
    EXPECT_EQ(installer_.findUpgradePath(), "");
    makeBundle(place_, "1.0");
    makeBundle(own / "Renamed.app", "1.10");
    makeBundle(own / "Other.app", "9", "org.example.Other");
    fs::create_directories(own / "Empty.app");
    EXPECT_EQ(installer_.findUpgradePath(), own / "Renamed.app");
    EXPECT_EQ(findUpgradePath(own / "Renamed.app"), place_);

    platform::RunLoop loop;
    const platform::MainQueueService mainQueue(loop);
    std::optional<fs::path> found;
    upgradePathForURL(own, bundle_, [&](const fs::path& path) { found = path; });
    EXPECT_TRUE(support::waitUntil([&] {
        loop.turn();
        return found.has_value();
    }));
    EXPECT_EQ(found, own / "Renamed.app");
}

TEST_F(AppInstallerTest, KnowsWhereABundleCanBePut) {
    EXPECT_TRUE(QNAppInstaller::isValidInstallPath(place_));
    for (const char* const folder : {".Trash", ".Trash-1000/files", ".Trashes/501",
                                     "data/Trash/files", "Backups.backupdb/x"}) {
        fs::create_directories(folder_.path() / folder);
        EXPECT_FALSE(QNAppInstaller::isValidInstallPath(folder_.path() / folder / "App.app"));
    }
    EXPECT_FALSE(QNAppInstaller::isValidInstallPath(folder_.path() / "missing/App.app"));
    EXPECT_FALSE(QNAppInstaller::appIsRunningFromReadOnlyDiskImage());
    const support::ScopedVariable nowhere("TONVALE_LOCAL_APPLICATIONS", "/proc/none");
    EXPECT_EQ(installer_.defaultInstallFolder(), folder_.path() / "Applications");
    installer_.setAllowUserSpecificInstall(false);
    EXPECT_EQ(installer_.defaultInstallFolder(), "/proc/none");
}
