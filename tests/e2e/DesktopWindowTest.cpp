#include "e2e/DesktopFixture.h"

#include "app/ScriptedHelper.h"
#include "platform/base/DescriptorLimit.h"
#include "support/DesktopPortal.h"
#include "support/Files.h"
#include "support/ScopedVariable.h"
#include "support/VirtualDisplay.h"

#include <QDBusVariant>
#include <QGuiApplication>
#include <QImage>
#include <QPalette>
#include <QPixmap>
#include <QScreen>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <functional>
#include <sstream>

using support::runCommand;
using support::waitUntil;
using namespace std::chrono_literals;

// The window among others: an X server, a window manager, and a hand on mouse and keyboard that the
// program cannot distinguish from the user's.
namespace {

constexpr QRect usual(200, 100, 500, titleBar + 4 * rowHeight);

class DesktopWindowTest : public DesktopFixture {
  protected:
    void startManager() {
        manager_.emplace(std::vector<std::string>{"openbox"});
        EXPECT_TRUE(waitUntil([] { return isManaged(); })) << manager_->output();
    }

    /// The root window names a window of the manager, which may have ended.
    static bool isManaged() {
        const std::string text = runCommand({"xprop", "-root", "_NET_SUPPORTING_WM_CHECK"}).output;
        const auto place = text.find("# ");
        if (place == std::string::npos)
            return false;
        const std::string window = text.substr(place + 2, text.find('\n') - place - 2);
        return runCommand({"xprop", "-id", window, "_NET_WM_NAME"}).output.find("Openbox") !=
               std::string::npos;
    }

    /// Answers when the window is there.
    void openWindow(const std::optional<QRect>& remembered = usual) {
        if (remembered)
            rememberFrame(*remembered);
        startTonvale();
        EXPECT_TRUE(waitUntil([&] {
            window_ =
                runCommand({"xdotool", "search", "--onlyvisible", "--name", "^Tonvale$"}).output;
            window_ = window_.substr(0, window_.find('\n'));
            return !window_.empty() && !frame().isEmpty();
        })) << tonvale_->output();
        const auto hasKeys = [&] {
            return runCommand({"xdotool", "getwindowfocus"}).output == window_ + "\n";
        };
        EXPECT_TRUE(!manager_ || waitUntil(hasKeys));
    }

    QRect frame() const {
        const std::string text =
            runCommand({"xdotool", "getwindowgeometry", "--shell", window_}).output;
        const auto number = [&text](const std::string& key) {
            const auto place = text.find(key + "=");
            return place == std::string::npos ? 0 : std::stoi(text.substr(place + key.size() + 1));
        };
        return {number("X"), number("Y"), number("WIDTH"), number("HEIGHT")};
    }

    bool becomes(const QRect& wanted) const {
        const bool isThere = waitUntil([&] { return frame() == wanted; }, 5s);
        const QRect is = frame();
        EXPECT_TRUE(isThere) << is.x() << " " << is.y() << " " << is.width() << " " << is.height();
        return isThere;
    }

    /// One call of the tool, so that its steps follow each other as a hand's do.
    static void hand(const std::string& steps) {
        std::vector<std::string> arguments{"xdotool"};
        std::istringstream stream(steps);
        for (std::string word; stream >> word;)
            arguments.push_back(word);
        const auto result = runCommand(arguments);
        EXPECT_EQ(result.status, 0) << result.output;
    }

    static std::string to(const QPoint& place) {
        return "mousemove --sync " + std::to_string(place.x()) + " " + std::to_string(place.y()) +
               " ";
    }

    static void drag(const QPoint& from, const QPoint& way) {
        std::string steps = to(from) + "mousedown 1 ";
        for (int step = 1; step <= 4; ++step)
            steps += to(from + way * step / 4) + "sleep 0.05 ";
        hand(steps + "mouseup 1");
    }

    void selectPlayer() {
        EXPECT_TRUE(waitUntil([&] { // the item may not be there yet
            hand("key Down key Left");
            return !plugin_->takeCommands().empty();
        }));
    }

    /// Whether the free room of the window, as the screen shows it, has this colour.
    bool isBackground(const QColor& color) const {
        const QRect place = frame();
        const QImage image =
            QGuiApplication::primaryScreen()
                ->grabWindow(0, place.x(), place.y(), place.width(), place.height())
                .toImage();
        return !image.isNull() && image.pixelColor(4, place.height() - 20) == color;
    }

    /// What leaving in that way leaves behind, and how long it takes. The program serves a plug-in.
    void expectGoodEnd(const char* way, const std::function<void()>& leave, int status = 0) {
        connectPlayer();
        const support::BusConnection bus(session_.address());
        auto set = QDBusMessage::createMethodCall("com.quarnel.Tonvale",
                                                  "/com/quarnel/Tonvale/programs/player",
                                                  "org.freedesktop.DBus.Properties", "Set");
        set.setArguments(
            {"com.quarnel.Tonvale.Program", "Volume", QVariant::fromValue(QDBusVariant(30))});
        EXPECT_TRUE(waitUntil([&] { return bus->call(set).type() == QDBusMessage::ReplyMessage; }))
            << way;
        const auto before = std::chrono::steady_clock::now();
        leave();
        EXPECT_EQ(tonvale_->wait(), status) << way << tonvale_->output();
        EXPECT_LT(std::chrono::steady_clock::now() - before, 3s) << way;
        EXPECT_FALSE(std::filesystem::exists(MVCommMainSocketPath())) << way;
        EXPECT_NE(support::contentOf(preferences_).find("<key>player</key>"), std::string::npos)
            << way;
        EXPECT_NE(rememberedFrame(), "") << way;
        plugin_.reset();
        tonvale_.reset();
        std::filesystem::remove(preferences_);
    }

    std::optional<support::ChildProcess> manager_;
    std::string window_;
};

} // namespace

// The first one, since a window manager leaves marks on the display.
TEST_F(DesktopWindowTest, WithoutAWindowManagerItFollowsThePointer) {
    openWindow();
    drag({450, 115}, {60, 40});
    EXPECT_TRUE(becomes({260, 140, usual.width(), usual.height()}));
    drag({260 + 1, 300}, {-50, 0});
    EXPECT_TRUE(becomes({210, 140, 550, usual.height()}));
}

TEST_F(DesktopWindowTest, ItIsMovedAndResizedByTheWindowManagerInWholeRows) {
    startManager();
    openWindow();
    ASSERT_TRUE(becomes(usual));
    drag({450, 115}, {60, 40});
    // A move starts after some distance.
    EXPECT_TRUE(waitUntil([&] { return frame().x() > 230; }));
    EXPECT_GT(frame().y(), 115);
    EXPECT_EQ(frame().size(), usual.size());
    const QRect before = frame();
    drag(before.bottomRight() - QPoint(1, 1), {40, rowHeight + rowHeight / 2 + 8});
    EXPECT_TRUE(waitUntil([&] { return frame().width() > 515; })) << frame().width();
    EXPECT_TRUE(waitUntil([&] {
        const int content = frame().height() - titleBar;
        return content % rowHeight == 0 && content > 4 * rowHeight;
    })) << frame().height();
    EXPECT_EQ(frame().topLeft(), before.topLeft());
    const QRect last = frame();
    quitTonvale();
    EXPECT_EQ(rememberedFrame(), textOf(last));
    openWindow(std::nullopt);
    EXPECT_TRUE(becomes(last));
}

TEST_F(DesktopWindowTest, AFrameOnADisconnectedScreenMovesToAnExistingOne) {
    startManager();
    openWindow(usual.translated(5000, 0));
    const QRect screen(0, 0, 1280, 800);
    EXPECT_TRUE(waitUntil([&] { return screen.contains(frame()); })) << frame().x();
    EXPECT_EQ(frame().size(), usual.size());
}

TEST_F(DesktopWindowTest, ADoubleClickOnTheTitleZoomsAndTheUsualFrameIsRemembered) {
    startManager();
    openWindow();
    ASSERT_TRUE(becomes(usual));
    hand(to({450, 115}) + "click --repeat 2 --delay 50 1");
    EXPECT_TRUE(waitUntil([&] { return frame().width() == 1280; }));
    quitTonvale();
    EXPECT_EQ(rememberedFrame().substr(0, 12), "200 100 500 ");
    openWindow(std::nullopt);
    EXPECT_TRUE(waitUntil([&] { return frame().width() == 1280; })) << "it is still maximised";
    hand(to({450, 15}) + "click --repeat 2 --delay 50 1");
    EXPECT_TRUE(becomes(usual));
}

TEST_F(DesktopWindowTest, StrongContrastIsFollowedWhileItRuns) {
    support::DesktopPortal portal(session_);
    openWindow();
    connectPlayer();
    const QColor contrast = QGuiApplication::palette().color(QPalette::Base);
    EXPECT_TRUE(waitUntil([&] { return !isBackground(contrast); }));
    portal.change("org.freedesktop.appearance", "contrast", 1U);
    EXPECT_TRUE(waitUntil([&] { return isBackground(contrast); }));
    portal.change("org.freedesktop.appearance", "contrast", 0U);
    EXPECT_TRUE(waitUntil([&] { return !isBackground(contrast); }));
}

TEST_F(DesktopWindowTest, KeysAndTheWheelReachTheWire) {
    startManager();
    openWindow();
    connectPlayer();
    selectPlayer();
    hand("key Home");
    sentUntil("9,4711,0 ");
    hand("key Prior key End");
    EXPECT_EQ(sentUntil("9,4711,100 "), "9,4711,10 9,4711,100 ");
    hand("key space");
    sentUntil("10,4711,1 ");
    hand("key ctrl+z");
    sentUntil("10,4711,0 ");
    hand(to({480, 100 + titleBar + rowHeight / 2 + 12}) + "click 5");
    sentUntil("9,4711,95 ");
    hand("key F10 key Up key Return"); // the last entry
    EXPECT_EQ(tonvale_->wait(), 0) << tonvale_->output();
}

TEST_F(DesktopWindowTest, MoreConnectionsThanItHasDescriptorsForLeaveItUsable) {
    startManager();
    launcher_ = {"prlimit", "--nofile=1024"};
    openWindow();
    connectPlayer();
    selectPlayer();
    platform::raiseDescriptorLimit(); // for our ends
    std::vector<platform::FileDescriptor> connections;
    EXPECT_TRUE(waitUntil([&] {
        while (platform::FileDescriptor next = platform::connectUnixSocket(MVCommMainSocketPath()))
            connections.push_back(std::move(next));
        return tonvale_->output().find("Not accepting connections for now") != std::string::npos;
    })) << connections.size();
    // A window of another size asks the display for memory.
    const QSize larger = usual.size() + QSize(60, rowHeight);
    hand("windowsize " + window_ + " " + std::to_string(larger.width()) + " " +
         std::to_string(larger.height()) + " key space");
    EXPECT_TRUE(becomes({usual.topLeft(), larger}));
    sentUntil("10,4711,1 ");
    quitTonvale();
}

TEST_F(DesktopWindowTest, TheDesktopsActionsMuteWhatPlaysAndOpenThePreferences) {
    const auto isMuted = [&](const std::function<void()>& ask) {
        return waitUntil([&] {
            plugin_->reportLevel(4711, 0.5F);
            ask();
            return std::ranges::any_of(plugin_->takeCommands(), [](const auto& command) {
                return command.type == kMVCommSetMute && command.value == 1;
            });
        });
    };
    startTonvale();
    connectPlayer();
    EXPECT_TRUE(isMuted([&] { activateAction("mute-all"); }));
    EXPECT_EQ(runCommand({TONVALE_PROGRAM, "--action", "preferences"}).status, 0);
    EXPECT_TRUE(waitUntil([] {
        return runCommand({"xdotool", "search", "--onlyvisible", "--name", "^Preferences$"})
                   .status == 0;
    }));
    quitTonvale();
    std::filesystem::remove(preferences_);

    tonvale_.emplace(std::vector<std::string>{TONVALE_PROGRAM, "--action", "mute-all"});
    EXPECT_TRUE(
        waitUntil([] { return platform::connectUnixSocket(MVCommMainSocketPath()).get() >= 0; }));
    connectPlayer();
    EXPECT_TRUE(isMuted([] {})) << "a first start, when it knows what plays";
}

TEST_F(DesktopWindowTest, EveryWayOutSavesAndRemovesTheSocketInTime) {
    startManager();
    openWindow();
    expectGoodEnd("the menu", [] { hand("key F10 key Up key Return"); });
    openWindow();
    expectGoodEnd("the window's key", [] { hand("key ctrl+w"); });
    startTonvale();
    expectGoodEnd("a signal", [&] { tonvale_->signal(SIGHUP); });

    const std::string library = std::filesystem::path(std::getenv("TMPDIR")) / "no plug-in yet";
    std::filesystem::create_directory(library);
    startTonvale({{"TONVALE_LOCAL_LIBRARY", library}});
    EXPECT_TRUE(waitUntil([] {
        return runCommand({"xdotool", "search", "--onlyvisible", "--name", "restart"}).status == 0;
    })) << "the alert that offers it";
    tonvale_->signal(SIGTERM);
    EXPECT_EQ(tonvale_->wait(), 0) << "the restart that somebody else has asked for";
    EXPECT_FALSE(std::filesystem::exists(MVCommMainSocketPath()));

    std::optional<support::VirtualDisplay> other(std::in_place);
    startTonvale();
    expectGoodEnd(
        "the end of the display", [&] { other.reset(); }, 1);
}

TEST_F(DesktopWindowTest, TheEndOfTheSessionEndsItThoughClosingWouldHideItsWindow) {
    startManager();
    support::ChildProcess sessionManager({SESSION_MANAGER_PROGRAM});
    ASSERT_TRUE(waitUntil([&] { return sessionManager.output().ends_with('\n'); }));
    const std::string address = sessionManager.output();
    const support::ScopedVariable variable("SESSION_MANAGER",
                                           address.substr(0, address.find('\n')));
    const ScriptedHelper helper(session_.address(), true);
    openWindow();
    const auto isShownSoon = [](bool isShown) {
        return waitUntil([isShown] {
            const auto found =
                runCommand({"xdotool", "search", "--onlyvisible", "--name", "^Tonvale$"});
            return (found.status == 0) == isShown;
        });
    };
    hand("key ctrl+w");
    EXPECT_TRUE(isShownSoon(false));
    EXPECT_TRUE(tonvale_->isRunning()) << "the helper can show it again";
    activateAction("no such action");
    EXPECT_TRUE(isShownSoon(true));
    expectGoodEnd("the session's end", [&] { sessionManager.signal(SIGUSR1); });
    EXPECT_NE(sessionManager.output().find("saved"), std::string::npos);
}
