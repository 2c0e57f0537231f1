#include "install/MVInstallerController.h"

#include "framework/installer/QNInstallBOM.h"
#include "install/HelperInstallation.h"
#include "platform/base/Directories.h"
#include "platform/bundle/Bundle.h"
#include "platform/window/Alert.h"
#include "support/Files.h"
#include "support/PrivateFolder.h"
#include "support/SystemLogRecorder.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <QTimer>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <vector>

namespace fs = std::filesystem;
using platform::Alert;

// With a tool that is a script, in place of the bundle's.
namespace {

/// Answers all alerts with one button, and keeps them.
class Answers final : public platform::AlertPresenter {
  public:
    Answers() { platform::replaceAlertPresenter(this); }
    ~Answers() override { platform::replaceAlertPresenter(nullptr); }

    Alert::Button run(const Alert& alert) override {
        shown.push_back(alert);
        return button;
    }

    Alert::Button button = Alert::standard;
    std::vector<Alert> shown;
};

std::string replyOf(int code, int index) {
    return "<plist version=\"1.0\"><dict><key>MVInstallerErrorKey</key><integer>" +
           std::to_string(code) + "</integer><key>MVInstallerIndexKey</key><integer>" +
           std::to_string(index) + "</integer></dict></plist>";
}

class MVInstallerControllerTest : public testing::Test {
  protected:
    MVInstallerControllerTest() {
        write(plugin_ / "Contents/Info.plist", "plug-in");
        reply(replyOf(0, 0));
    }

    static void write(const fs::path& file, const std::string& text) {
        fs::create_directories(file.parent_path());
        std::ofstream(file) << text;
        fs::permissions(file, fs::perms::owner_all);
    }

    /// The tool keeps its arguments, and says this once it may go on.
    void reply(const std::string& text) {
        write(folder_.path() / "reply", text);
        write(tool_, "#!/bin/sh\ncd '" + folder_.path().string() +
                         "'\nprintf '\\006' >&2\nhead -c 1 >/dev/null\n"
                         "printf '%s\\n' \"$@\" >arguments\ncat reply\n");
    }

    std::string arguments() const { return support::contentOf(folder_.path() / "arguments"); }

    MVInstallerController::Dependencies dependencies() {
        return {.terminate = [this] { ++ends_; },
                .restart =
                    [this] {
                        ++restarts_;
                        return 0;
                    },
                .mayReplace = [this](const std::string&) { return mayReplace_; },
                .bundlePath = QString::fromStdString(bundle_),
                .localLibraryPath = QString::fromStdString(folder_.path() / "Library"),
                .pkexec = folder_.path() / "pkexec"};
    }

    const support::PrivateFolder folder_;
    const support::SystemLogRecorder log_;
    const fs::path bundle_ = folder_.path() / "Tonvale.app";
    const fs::path plugin_ = bundle_ / "Contents/PlugIns/Tonvale.plugin";
    const fs::path tool_ = bundle_ / "Contents/Helpers/TNInstaller";
    const fs::path installed_ = folder_.path() / "Library/Audio/Plug-Ins/HAL/Tonvale.plugin";
    bool mayReplace_ = true;
    int ends_ = 0;
    int restarts_ = 0;
    Answers alerts_;
    MVInstallerController controller_{dependencies()};
};

} // namespace

TEST_F(MVInstallerControllerTest, InstallsWhatIsMissingOrDifferentOnly) {
    const auto installs = [&] {
        fs::remove(folder_.path() / "arguments");
        const bool hasInstalled = controller_.install();
        EXPECT_EQ(hasInstalled, controller_.filesToInstall().has_value());
        EXPECT_EQ(arguments(),
                  hasInstalled ? "i\n" + plugin_.string() + '\n' + installed_.string() + '\n' : "");
        return hasInstalled;
    };
    EXPECT_TRUE(installs()) << "nothing is there";
    fs::create_directories(installed_.parent_path());
    fs::copy(plugin_, installed_, fs::copy_options::recursive);
    EXPECT_FALSE(installs());
    write(installed_ / "Contents/Info.plist", "plug-iN");
    EXPECT_TRUE(installs()) << "one byte differs";
    fs::remove_all(installed_);
    write(installed_, "a file");
    EXPECT_TRUE(installs());
    EXPECT_TRUE(alerts_.shown.empty());
    EXPECT_EQ(ends_, 0);
}

TEST_F(MVInstallerControllerTest, InstallsWhatTheManifestOfTheBundleLists) {
    const auto manifest = QNInstallBOM::BOMWithBundle(platform::Bundle(TONVALE_CONTENTS));
    ASSERT_TRUE(manifest);
    ASSERT_EQ(manifest->installResources().size(), 1U);
    const QNInstallResource& item = manifest->installResources().front();
    EXPECT_TRUE(controller_.install());
    const QStringList words = QString::fromStdString(arguments()).split('\n');
    const std::string root = fs::path(TONVALE_CONTENTS).parent_path();
    EXPECT_EQ(fs::relative(item.from().toLocalFile().toStdString(), root),
              fs::relative(words[1].toStdString(), bundle_));
    EXPECT_EQ(fs::relative(item.to().toLocalFile().toStdString(),
                           platform::builtInLocalLibraryDirectory()),
              fs::relative(words[2].toStdString(), folder_.path() / "Library"));
    EXPECT_EQ(item.mask(), 0755U);
    EXPECT_EQ(manifest->uninstallResources().front().path(), item.to());
}

TEST_F(MVInstallerControllerTest, ExplainsWhatTheToolReportsAndEnds) {
    struct Case {
        std::string reply;
        const char* text;
    };
    const char* const unknown = "An unknown internal error has occurred.";
    for (const Case& each :
         {Case{"", unknown}, Case{"garbage", unknown}, Case{"<plist><array/></plist>", unknown},
          Case{replyOf(1, 0), "An internal error (1) has occurred."},
          Case{replyOf(2, 0), "An internal error (2) has occurred."},
          Case{replyOf(7, 0), "An internal error (7) has occurred."},
          Case{replyOf(3, 0), "Couldn't install \"Tonvale.plugin\""}, Case{replyOf(3, 5), ""},
          Case{replyOf(3, -1), ""}}) {
        reply(each.reply);
        EXPECT_FALSE(controller_.install());
        ASSERT_EQ(alerts_.shown.size(), 1U);
        EXPECT_EQ(alerts_.shown[0].title, "Installation failed");
        EXPECT_EQ(alerts_.shown[0].message, each.text);
        EXPECT_EQ(alerts_.shown[0].defaultButton, "Quit");
        EXPECT_EQ(std::exchange(ends_, 0), 1);
        alerts_.shown.clear();
    }
    reply(replyOf(8, 1));
    controller_.uninstall(false);
    EXPECT_EQ(alerts_.shown.back().title, "Uninstall failed");
    EXPECT_EQ(alerts_.shown.back().message, "Couldn't uninstall \"Tonvale.app\"");
    fs::remove(tool_);
    EXPECT_FALSE(controller_.install());
    EXPECT_EQ(alerts_.shown.back().title, "The installer is missing.");
    EXPECT_EQ(alerts_.shown.back().message, "Please re-install the application.");
}

TEST_F(MVInstallerControllerTest, EndsWhenInstallingIsCancelledAndTellsOtherReasons) {
    struct Case {
        const char* pkexec;
        bool ends;
        const char* alert; // when installing
        const char* alertOfUninstall;
    };
    const char* const notInstalled = "The audio plug-in can't be installed";
    const char* const notUninstalled = "Tonvale can't be uninstalled";
    mayReplace_ = false;
    for (const Case& each :
         {Case{"exit 126", true, nullptr, nullptr},
          Case{"echo 'Not authorized' >&2; exit 127", false, notInstalled, notUninstalled},
          Case{"echo 'No authentication agent' >&2; exit 127", false, notInstalled, notUninstalled},
          Case{"exit 3", true, notInstalled, "Authorization error: 3"}}) {
        write(folder_.path() / "pkexec", std::string("#!/bin/sh\n") + each.pkexec);
        EXPECT_FALSE(controller_.install());
        EXPECT_EQ(std::exchange(ends_, 0), each.ends ? 1 : 0) << each.pkexec;
        EXPECT_EQ(alerts_.shown.size(), each.alert != nullptr ? 1U : 0U) << each.pkexec;
        if (each.alert != nullptr) {
            EXPECT_EQ(alerts_.shown.back().title, each.alert);
        }
        alerts_.shown.clear();

        controller_.uninstall(false);
        EXPECT_EQ(ends_ + restarts_, 0) << each.pkexec;
        ASSERT_EQ(alerts_.shown.size(), each.alertOfUninstall != nullptr ? 2U : 1U);
        if (each.alertOfUninstall != nullptr) {
            EXPECT_EQ(alerts_.shown.back().title, each.alertOfUninstall);
        }
        alerts_.shown.clear();
    }
    write(folder_.path() / "pkexec", "#!/bin/sh\nshift\nexec \"$@\"\n");
    EXPECT_TRUE(controller_.install());
}

TEST_F(MVInstallerControllerTest, UninstallsOnceAsked) {
    struct Case {
        Alert::Button button;
        bool terminate;
        bool runs;
        int restarts;
        int ends;
    };
    for (const Case& each :
         {Case{Alert::alternate, false, false, 0, 0}, Case{Alert::alternate, true, false, 0, 1},
          Case{Alert::standard, false, true, 1, 0}, Case{Alert::standard, true, true, 1, 1},
          Case{Alert::other, false, true, 0, 1}}) {
        alerts_.button = each.button;
        fs::remove(folder_.path() / "arguments");
        controller_.uninstall(each.terminate);
        EXPECT_EQ(arguments(),
                  each.runs ? "u\n" + installed_.string() + '\n' + bundle_.string() + '\n' : "");
        EXPECT_EQ(std::exchange(restarts_, 0), each.restarts);
        EXPECT_EQ(std::exchange(ends_, 0), each.ends);
    }
    EXPECT_TRUE(alerts_.shown[0].details.contains("logs"));

    write(bundle_ / "Contents/Resources/package", "tonvale-audio\n");
    controller_.uninstall(false);
    EXPECT_EQ(arguments(), "u\n" + installed_.string() + '\n') << "the package keeps its files";
    EXPECT_EQ(alerts_.shown.back().title, "Remove the package \"tonvale-audio\"");
}

TEST_F(MVInstallerControllerTest, RemovesTheHelperOnceTheUserHasAgreed) {
    const fs::path helper = folder_.path() / "Helper.app";
    int ended = 0;
    auto surroundings = dependencies();
    surroundings.helper = std::make_shared<HelperInstallation>(HelperInstallation::Dependencies{
        .destination = QString::fromStdString(helper),
        .loginItems = platform::LoginItems({.own = folder_.path() / "autostart"}),
        .killProcess = [&](const QString&) { ++ended; }});
    MVInstallerController controller(surroundings);
    write(helper / "file", "");
    alerts_.button = Alert::alternate;
    controller.uninstall(false);
    EXPECT_EQ(ended, 0) << "cancelled";
    alerts_.button = Alert::other;
    mayReplace_ = false;
    write(folder_.path() / "pkexec", "#!/bin/sh\nexit 126\n");
    controller.uninstall(false);
    EXPECT_EQ(ended, 0) << "not authorized";
    mayReplace_ = true;
    write(tool_, "#!/bin/sh\nprintf '\\006' >&2\nhead -c 1 >/dev/null\n[ -e '" + helper.string() +
                     "' ] || printf '%s' '" + replyOf(0, 0) + "'\n");
    controller.uninstall(false);
    EXPECT_EQ(ended, 1);
    EXPECT_EQ(ends_, 1) << "the helper was there when the tool worked";
    EXPECT_EQ(alerts_.shown.size(), 3U);
}

TEST_F(MVInstallerControllerTest, WindowsTakeNoInputWhileTheToolWorks) {
    write(tool_, "#!/bin/sh\nprintf '\\006' >&2\nhead -c 1 >/dev/null\n"
                 "until [ -e '" +
                     (folder_.path() / "go").string() + "' ]; do sleep 0.01; done\n");
    QWidget window;
    window.show();
    bool wasEnabled = true;
    QTimer::singleShot(0, [&] {
        wasEnabled = window.isEnabled();
        write(folder_.path() / "go", "");
    });
    EXPECT_FALSE(controller_.install());
    EXPECT_FALSE(wasEnabled);
    EXPECT_TRUE(window.isEnabled());
}

TEST_F(MVInstallerControllerTest, RestartsOnlyWhenTheButtonIsPressed) {
    controller_.runPostInstallAlert();
    EXPECT_EQ(restarts_, 1);
    EXPECT_TRUE(alerts_.shown[0].isGuarded);
    alerts_.button = Alert::alternate;
    controller_.runPostInstallAlert();
    EXPECT_EQ(restarts_, 1);
}

TEST_F(MVInstallerControllerTest, ADeathOfTheToolByASignalIsTold) {
    write(tool_, "#!/bin/sh\nprintf '\\006' >&2\nhead -c 1 >/dev/null\nkill -BUS $$\n");
    std::vector<int> signals;
    controller_.onToolDied([&](const QString& tool, int signal) {
        EXPECT_EQ(tool, "TNInstaller");
        signals.push_back(signal);
    });
    EXPECT_FALSE(controller_.install());
    EXPECT_EQ(signals, std::vector<int>{SIGBUS});
    reply(replyOf(0, 0));
    EXPECT_TRUE(controller_.install());
    EXPECT_EQ(signals.size(), 1U);
}
