#include "comm/MVCommSocketPath.h"
#include "platform/loop/UnixSocket.h"
#include "support/ChildProcess.h"
#include "support/Files.h"
#include "support/PrivateBus.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/ScriptedPlugin.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QRegularExpression>

#include <csignal>
#include <filesystem>
#include <optional>
#include <sys/socket.h>

using support::ChildProcess;
using support::contentOf;

// The real program, started as the user's desktop starts it, off screen.
namespace {

class TonvaleTest : public testing::Test {
  protected:
    const support::PrivateFolder folder_;
    const support::ScopedVariable socketFolder_{"TONVALE_SOCKET_DIR", folder_.path().string()};
    const std::string socket_ = MVCommMainSocketPath();
    const support::ScopedVariable logFolder_{"XDG_STATE_HOME", folder_.path() / "state"};
    const support::ScopedVariable preferences_{"XDG_CONFIG_HOME", folder_.path() / "config"};
    const std::string log_ = folder_.path() / "state/Tonvale/Tonvale.log";

    /// The program, serving its socket.
    std::unique_ptr<ChildProcess> start(const std::vector<std::string>& options = {}) const {
        std::vector<std::string> arguments{TONVALE_PROGRAM};
        arguments.insert(arguments.end(), options.begin(), options.end());
        auto program = std::make_unique<ChildProcess>(arguments);
        EXPECT_TRUE(support::waitUntil([&] { return isServed() || !program->isRunning(); }));
        EXPECT_TRUE(program->isRunning()) << program->output();
        return program;
    }

    bool isServed() const {
        return std::filesystem::exists(socket_) && platform::connectUnixSocket(socket_);
    }

    std::string path(const std::string& name) const { return folder_.path() / name; }

    static bool says(const ChildProcess& program, const std::string& text) {
        return support::waitUntil([&] { return program.output().find(text) != std::string::npos; });
    }

    bool logs(const std::string& text) const {
        return support::waitUntil([&] { return contentOf(log_).find(text) != std::string::npos; });
    }

    static void endWell(ChildProcess& program) {
        program.signal(SIGTERM);
        EXPECT_EQ(program.wait(), 0) << program.output();
    }
};

} // namespace

TEST_F(TonvaleTest, EveryTerminationSignalEndsItCleanlyAndRemovesTheSocket) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        const auto program = start();
        support::ScriptedPlugin plugin(socket_);
        program->signal(signal);
        EXPECT_EQ(program->wait(), 0) << program->output();
        EXPECT_FALSE(std::filesystem::exists(socket_)) << signal;
        EXPECT_TRUE(plugin.isEnded());
    }
}

TEST_F(TonvaleTest, ServesAgainWhenItsSocketFileHasVanishedAndKeepsItsConnections) {
    const auto program = start();
    support::ScriptedPlugin plugin(socket_);
    std::filesystem::remove(socket_);
    EXPECT_TRUE(support::waitUntil([&] { return isServed(); }));
    EXPECT_FALSE(plugin.isEnded());
    endWell(*program);
    EXPECT_FALSE(std::filesystem::exists(socket_));
}

TEST_F(TonvaleTest, GoesOnAndInformsTheUserWhenTheSocketCannotBeServed) {
    const QString usual = QString::fromStdString(folder_.path() / "usual.png");
    const QString told = QString::fromStdString(folder_.path() / "told.png");
    const auto waiting = start({"--screenshot", usual.toStdString()});
    waiting->signal(SIGTERM);
    EXPECT_EQ(waiting->wait(), 0);

    const support::ScopedVariable nowhere("TONVALE_SOCKET_DIR", folder_.path() / "missing");
    ChildProcess program({TONVALE_PROGRAM, "--screenshot", told.toStdString()});
    EXPECT_TRUE(says(program, "Couldn't bind(): No such file or directory (2)"));
    EXPECT_TRUE(program.isRunning());
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
    ASSERT_FALSE(QImage(told).isNull());
    EXPECT_NE(QImage(told), QImage(usual)) << "the window says something else";
}

TEST_F(TonvaleTest, ThePreferencesHoldTheMessageLanguageBeforeAPluginCanConnect) {
    const std::string preferences = path("config/com.quarnel.Tonvale.plist");
    for (const char* const language : {"de_DE", "fr_FR"}) {
        const support::ScopedVariable all("LC_ALL", std::string(language) + ".UTF-8");
        const auto program = start();
        EXPECT_NE(contentOf(preferences).find(std::string("<string>") + language),
                  std::string::npos);
    }
}

TEST_F(TonvaleTest, SavesAPictureOfItsWindowOnExit) {
    const std::string file = folder_.path() / "window.png";
    const auto program = start({"--screenshot", file});
    support::ScriptedPlugin plugin(socket_);
    plugin.checkIn(4711, "player");
    ASSERT_TRUE(logs("'player' connected"));
    program->signal(SIGTERM);
    EXPECT_EQ(program->wait(), 0);
    const QImage picture(QString::fromStdString(file));
    EXPECT_GE(picture.width(), 400);
    EXPECT_GE(picture.height(), 200);
    EXPECT_GT(picture.pixelColor(100, 150).red(), 20) << "brown, not empty";

    const auto failing = start({"--screenshot", (folder_.path() / "missing" / "x.png").string()});
    failing->signal(SIGTERM);
    EXPECT_EQ(failing->wait(), 0);
    EXPECT_TRUE(logs("Couldn't save the screenshot"));
}

TEST_F(TonvaleTest, PrintsTheVersionThatItsBundleStates) {
    ChildProcess program({TONVALE_PROGRAM, "--version"});
    EXPECT_EQ(program.wait(), 0);
    EXPECT_EQ(program.output(), "Tonvale " TONVALE_VERSION "\n");
    for (const char* const asking : {"--help", "-h"}) {
        ChildProcess help({TONVALE_PROGRAM, "-x", asking, "--bogus"});
        EXPECT_EQ(help.wait(), 0);
        EXPECT_TRUE(help.output().starts_with("Usage: ")) << help.output();
        EXPECT_NE(help.output().find("--debug"), std::string::npos);
    }
    EXPECT_FALSE(isServed()) << "nothing is started";
    EXPECT_FALSE(std::filesystem::exists(path("state"))) << "and nothing written";
}

TEST_F(TonvaleTest, TheFirstStartMakesPrivateFoldersAndALogAndTheNextOneKeepsThat) {
    endWell(*start());
    const std::string first = contentOf(log_);
    const std::string mark = "\xEF\xBB\xBF";
    ASSERT_TRUE(first.starts_with(mark));
    // What waits for the socket connects to it, which may be noticed or not.
    const QString probe = "(:[^\n]*: \\[I\\] '' disconnected\n)*";
    const QRegularExpression lines(QRegularExpression::anchoredPattern(
        QStringLiteral("\\d{4}-\\d\\d-\\d\\d \\d\\d:00:00 [+-]\\d+\n"
                       ":\\d\\d:\\d\\d\\.[\\d ]{3}: \\*{4} " TONVALE_VERSION
                       "[^\n]* - OS X Version [^\n]* \\(Intel 64-bit\\) \\*{4}\n"
                       ":[^\n]*: \\[I\\] \\*{4} [^\n]*: \\d+( \\(\\d+\\))? CPUs @ \\d+ Mhz, [^\n]* "
                       "RAM \\*{4}\n"
                       "%1:[^\n]*: \\[I\\] Ending on signal 15\n%1")
            .arg(probe)));
    EXPECT_TRUE(lines.match(QString::fromStdString(first.substr(mark.size()))).hasMatch()) << first;
    EXPECT_EQ(std::filesystem::status(path("state/Tonvale")).permissions(),
              std::filesystem::perms::owner_all);
    const auto debugging = start({"--debug", "-style", "fusion"});
    EXPECT_TRUE(logs(": [D] log level changed\n"));
    endWell(*debugging);
    EXPECT_EQ(contentOf(path("state/Tonvale/Tonvale0.log")), first);
}

TEST_F(TonvaleTest, WithoutASessionBusASecondStartEndsAtOnce) {
    const auto first = start();
    const std::string before = contentOf(log_);
    ChildProcess second({TONVALE_PROGRAM});
    EXPECT_EQ(second.wait(), 0);
    EXPECT_NE(second.output().find("Another one is running"), std::string::npos);
    EXPECT_TRUE(isServed());
    EXPECT_TRUE(contentOf(log_).starts_with(before)) << "nothing of the first is touched";
    endWell(*first);
    endWell(*start());
}

TEST_F(TonvaleTest, GoesOnWithoutAHomeAndWithDamagedPreferences) {
    std::ofstream(path("file")) << "no folder";
    {
        const support::ScopedVariable state("XDG_STATE_HOME", path("file/state"));
        const support::ScopedVariable config("XDG_CONFIG_HOME", path("file/config"));
        const support::ScopedVariable data("XDG_DATA_HOME", path("file/data"));
        const auto program = start();
        support::ScriptedPlugin plugin(socket_);
        plugin.checkIn(4711, "player");
        EXPECT_TRUE(says(*program, "'player' connected")) << "in the system log";
        endWell(*program);
    }
    const std::string preferences = path("config/com.quarnel.Tonvale.plist");
    std::filesystem::create_directories(path("config"));
    std::ofstream(preferences) << "<plist><dict><key>cut off";
    const auto program = start();
    EXPECT_TRUE(logs("com.quarnel.Tonvale.plist.damaged-"));
    endWell(*program);
    std::ofstream(preferences) << "<plist version=\"1.0\"><dict><key>Volume</key><string>loud"
                                  "</string><key>ShowInMenuBar</key><dict/><key>Apps</key><true/>"
                                  "</dict></plist>";
    endWell(*start());
}

TEST_F(TonvaleTest, DoesNotWaitForABusThatNeverAnswers) {
    const platform::FileDescriptor stuck = platform::makeUnixSocket();
    ASSERT_TRUE(platform::bindUnixSocket(stuck.get(), path("bus")));
    ASSERT_EQ(::listen(stuck.get(), 5), 0);
    const support::ScopedVariable address("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + path("bus"));
    const auto program = start();
    EXPECT_TRUE(says(*program, "The session bus doesn't answer"));
    endWell(*program);
}

TEST_F(TonvaleTest, WithoutADisplayOneSentenceSaysWhatToSet) {
    const support::ScopedVariable platform("QT_QPA_PLATFORM", std::nullopt);
    const support::ScopedVariable wayland("WAYLAND_DISPLAY", std::nullopt);
    for (const auto& [display, sentence] :
         std::vector<std::pair<std::optional<std::string>, std::string>>{
             {std::nullopt, "There is no display: set DISPLAY or WAYLAND_DISPLAY."},
             {path("none"), "No window can be shown (could not connect to display " + path("none") +
                                "): DISPLAY, WAYLAND_DISPLAY or --platform must name a "
                                "running display."}}) {
        const support::ScopedVariable x11("DISPLAY", display);
        ChildProcess program({TONVALE_PROGRAM});
        EXPECT_EQ(program.wait(), 1);
        EXPECT_EQ(program.output(), "Tonvale: " + sentence + "\n");
    }
    EXPECT_FALSE(std::filesystem::exists(path("state")));
}

TEST_F(TonvaleTest, RefusesWrongOptionsBeforeItStartsAnything) {
    constexpr int wrongUsage = 2;
    constexpr int noDisplay = 1; // so it would have started
    const std::string noOption = "Tonvale: There is no option --bogus; see --help.\n";
    const std::string noValue = " needs a value; see --help.\n";
    const support::ScopedVariable platform("QT_QPA_PLATFORM", std::nullopt);
    const support::ScopedVariable display("DISPLAY", std::nullopt);
    const support::ScopedVariable wayland("WAYLAND_DISPLAY", std::nullopt);
    const struct {
        std::vector<std::string> arguments;
        int status;
        std::string output = "Tonvale: There is no display: set DISPLAY or WAYLAND_DISPLAY.\n";
    } cases[] = {
        {{"--bogus"}, wrongUsage, noOption},
        {{"-x", "--bogus=1"}, wrongUsage, noOption},
        {{"--debug", "--bogus", "file"}, wrongUsage, noOption},
        {{"--screenshot"}, wrongUsage, "Tonvale: --screenshot" + noValue},
        {{"--screenshot", "--debug"}, wrongUsage, "Tonvale: --screenshot" + noValue},
        {{"--action"}, wrongUsage, "Tonvale: --action" + noValue},
        {{"--screenshot="}, wrongUsage, "Tonvale: --screenshot" + noValue},
        {{"-screenshot", "="}, wrongUsage, "Tonvale: -screenshot" + noValue},
        {{"-reverse", "--style"}, wrongUsage, "Tonvale: --style" + noValue},
        {{"--platform=offscreen"},
         wrongUsage,
         "Tonvale: --platform takes the next argument as its value; see --help.\n"},
        {{"--\x1b[31m"}, wrongUsage, "Tonvale: There is no option -- [31m; see --help.\n"},
        {{"-x", "y", "name=value", "-name=value", "-QNInstallVolume", "/volume"}, noDisplay},
        {{"-style", "fusion", "--style=fusion", "--reverse"}, noDisplay},
        {{"--qmljsdebugger=port:1", "-qwindowgeometry", "-1+1", "--nograb"}, noDisplay},
        {{"file", "--bogus"}, noDisplay},
        {{"--", "--bogus"}, noDisplay},
    };
    for (const auto& each : cases) {
        std::vector<std::string> words{TONVALE_PROGRAM};
        words.insert(words.end(), each.arguments.begin(), each.arguments.end());
        ChildProcess program(words);
        EXPECT_EQ(program.wait(), each.status) << each.arguments.front();
        EXPECT_EQ(program.output(), each.output) << each.arguments.front();
    }
    EXPECT_FALSE(isServed());
    EXPECT_FALSE(std::filesystem::exists(path("state")));
}

TEST_F(TonvaleTest, DamagedImagesOfOtherProgramsAreTheLogsBusiness) {
    const std::filesystem::path icons = path("data/pixmaps");
    std::filesystem::create_directories(icons);
    std::ofstream(icons / "cut.svg") << "<svg xmlns='http://www.w3.org/2000/svg' width='48'";
    std::ofstream(icons / "odd.svg") << "<svg xmlns='http://www.w3.org/2000/svg' width='48'>"
                                        "<use href='#nothing'/><text font-size='0'>x</text></svg>";
    const support::ScopedVariable data("XDG_DATA_DIRS", path("data"));
    const auto program = start({"--debug", "--screenshot", path("window.png")});
    support::ScriptedPlugin cut(socket_);
    cut.checkIn(4711, "cut", "/usr/bin/cut");
    support::ScriptedPlugin odd(socket_);
    odd.checkIn(4712, "odd", "/usr/bin/odd");
    EXPECT_TRUE(logs("An icon is damaged: Cannot read file"));
    EXPECT_TRUE(logs("An icon is damaged: link #nothing is undefined!"));
    EXPECT_TRUE(logs("An icon is damaged: QFont::setPointSizeF")) << "of no category of its own";
    endWell(*program);
    for (const char* const word : {"svg", "nothing", "QFont"})
        EXPECT_EQ(program->output().find(word), std::string::npos) << program->output();
}

TEST_F(TonvaleTest, SurvivesTheEndOfTheBus) {
    const support::PrivateBus other;
    std::optional<support::PrivateBus> bus(std::in_place);
    const auto program = start();
    bus.reset();
    support::ScriptedPlugin plugin(socket_);
    plugin.checkIn(4711, "player");
    EXPECT_TRUE(logs("'player' connected"));
    ChildProcess second({TONVALE_PROGRAM});
    EXPECT_EQ(second.wait(), 0) << second.output();
    EXPECT_TRUE(isServed()) << "there is still one";
    endWell(*program);
}
