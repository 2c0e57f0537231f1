#include "comm/MVCommSocketPath.h"
#include "platform/loop/UnixSocket.h"
#include "support/ChildProcess.h"
#include "support/PrivateAudioSession.h"
#include "support/ScriptedPlugin.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

using support::ChildProcess;
using support::runCommand;
using support::waitUntil;
using namespace std::chrono_literals;

namespace {

constexpr int panelSize = 40;
constexpr std::uint32_t process = 4711;

/// A desktop whose panel shows nothing but icons: lxqt-panel, openbox, and an audio session with
/// one output.
class TrayTest : public testing::Test {
  protected:
    TrayTest() {
        const std::filesystem::path config = std::getenv("XDG_CONFIG_HOME");
        std::filesystem::create_directories(config / "lxqt");
        std::ofstream(config / "lxqt/panel.conf")
            << "panels=panel1\n[panel1]\nplugins=statusnotifier\nposition=Bottom\npanelSize="
            << panelSize << "\niconSize=22\nwidth=100\nwidth-percent=true\n"
            << "[statusnotifier]\ntype=statusnotifier\nalignment=Right\n";
    }

    void startDesktop() {
        manager_.emplace(std::vector<std::string>{"openbox"});
        panel_.emplace(std::vector<std::string>{"lxqt-panel"});
        helper_.emplace(std::vector<std::string>{TONVALE_HELPER});
        ASSERT_TRUE(waitUntil([] { return hasIcon(); })) << panel_->output() << helper_->output();
    }

    void startTonvale() {
        tonvale_.emplace(std::vector<std::string>{TONVALE_PROGRAM});
        const std::string socket = MVCommMainSocketPath();
        ASSERT_TRUE(waitUntil([&] { return platform::connectUnixSocket(socket).get() >= 0; }))
            << tonvale_->output();
        ASSERT_TRUE(waitUntil([] { return isWindowShown(); }));
        player_.emplace(socket);
        player_->checkIn(process, "player");
        QObject::connect(&playing_, &QTimer::timeout,
                         [this] { player_->reportLevel(process, 0.5F); });
        playing_.start(20ms);
    }

    static QPoint place() {
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        return screen.bottomRight() - QPoint(panelSize, panelSize) / 2;
    }

    /// Something has been drawn on the panel where the only icon is.
    static bool hasIcon() {
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        const QImage image =
            QGuiApplication::primaryScreen()
                ->grabWindow(0, screen.right() - panelSize + 5, screen.bottom() - panelSize + 5,
                             panelSize - 10, panelSize - 10)
                .toImage();
        const QImage plain = [&] {
            QImage one(image.size(), image.format());
            one.fill(image.pixelColor(0, 0));
            return one;
        }();
        return image != plain;
    }

    static void press(const std::string& button) {
        runCommand({"xdotool", "mousemove", std::to_string(place().x()),
                    std::to_string(place().y()), "click", button});
    }

    static void key(const std::string& name) { runCommand({"xdotool", "key", name}); }

    static bool hasVolume(const std::string& text) {
        return waitUntil([&] {
            return runCommand({"wpctl", "get-volume", "@DEFAULT_AUDIO_SINK@"}).output ==
                   "Volume: " + text + "\n";
        });
    }

    static bool isWindowShown(const std::string& title = "Tonvale") {
        return runCommand({"xdotool", "search", "--onlyvisible", "--name", "^" + title + "$"})
                   .status == 0;
    }

    static bool isMenuShown() {
        const auto found = runCommand({"xdotool", "search", "--onlyvisible", "--class", "lxqt"});
        return std::ranges::count(found.output, '\n') > 1;
    }

    static void chooseFromBelow(int place) {
        press("3");
        ASSERT_TRUE(waitUntil([] { return isMenuShown(); })) << "there is no menu";
        for (int i = 0; i < place; ++i)
            key("Up");
        key("Return");
        EXPECT_TRUE(waitUntil([] { return !isMenuShown(); }));
    }

    bool isMutedSoon() {
        return waitUntil([&] {
            for (const MVCommConsoleMessage& command : player_->takeCommands()) {
                if (command.type == kMVCommSetMute && command.value == 1)
                    return true;
            }
            return false;
        });
    }

    const support::PrivateAudioSession audio_;
    std::optional<ChildProcess> manager_;
    std::optional<ChildProcess> panel_;
    std::optional<ChildProcess> helper_;
    std::optional<ChildProcess> tonvale_;
    std::optional<support::ScriptedPlugin> player_;
    QTimer playing_;
};

} // namespace

TEST_F(TrayTest, TheIconTurnsMutesTogglesAndHasAMenu) {
    ASSERT_NO_FATAL_FAILURE(startDesktop());
    runCommand({"wpctl", "set-volume", "@DEFAULT_AUDIO_SINK@", "50%"});
    press("4");
    EXPECT_TRUE(hasVolume("0.55"));
    press("5");
    press("5");
    EXPECT_TRUE(hasVolume("0.45"));
    press("2");
    EXPECT_TRUE(hasVolume("0.45 [MUTED]"));

    ASSERT_NO_FATAL_FAILURE(startTonvale());
    for (const bool isShown : {false, true}) {
        press("1");
        EXPECT_TRUE(waitUntil([&] { return isWindowShown() == isShown; })) << isShown;
    }
    chooseFromBelow(4); // "Mute everything that plays"
    EXPECT_TRUE(isMutedSoon());
    chooseFromBelow(2); // "Preferences…"
    EXPECT_TRUE(waitUntil([] { return isWindowShown("Preferences"); }));
}
