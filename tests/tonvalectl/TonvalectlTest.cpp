#include "tonvalectl/CtlFixture.h"

#include "support/BusConnection.h"

#include <algorithm>
#include <csignal>

namespace {

constexpr std::uint32_t pid = 4711;
constexpr std::uint32_t otherPid = 4712;

using TonvalectlTest = CtlFixture;

std::ptrdiff_t lines(const std::string& text) {
    return std::ranges::count(text, '\n');
}

} // namespace

TEST_F(TonvalectlTest, HelpAndVersionNeedNoApplication) {
    bus_.reset();
    const Result version = ctl({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output, "tonvalectl " TONVALE_VERSION "\n");
    const Result help = ctl({"set", "--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* const word :
         {"list", "get", "set", "reset", "mute", "unmute", "toggle", "ignore", "unignore", "forget",
          "default", "show", "monitor", "--json"})
        EXPECT_NE(help.output.find(word), std::string::npos) << word;
}

TEST_F(TonvalectlTest, ListsProgramsForUsersAndForScripts) {
    startTonvale();
    EXPECT_EQ(ctl({"list", "--json"}).output, "[]\n");
    checkIn(pid, "A \"quoted\"\\\x1b[31m name");
    checkIn(otherPid, "coreaudiod");
    const QJsonObject program = programJson("A \"quoted\"\\\x1b[31m name");
    EXPECT_EQ(program["volume"], 100);
    EXPECT_EQ(program["muted"], false);
    EXPECT_EQ(program["activity"], 0);
    EXPECT_EQ(program["pid"], static_cast<int>(pid));
    EXPECT_EQ(program["controllable"], true);
    EXPECT_EQ(program["running"], true);
    const Result table = ctl({"list"});
    EXPECT_EQ(lines(table.output), 3) << table.output;
    EXPECT_NE(table.output.find("\nSound Effects"), std::string::npos);
    EXPECT_NE(table.output.find("A \"quoted\"\\ [31m name"), std::string::npos);
    for (const auto& arguments :
         std::vector<std::vector<std::string>>{{"list", "--names"}, {"list", "--names", "--all"}})
        EXPECT_EQ(ctl(arguments).output, "Sound Effects\nA \"quoted\"\\ [31m name\n");
}

TEST_F(TonvalectlTest, ListsInTheOrderOfTheWindow) {
    startTonvale();
    std::uint32_t process = pid;
    for (const char* const name :
         {"zoom", "Zebra", "alpha", "Beta", "coreaudiod", "gone", "another"})
        checkIn(process++, name);
    leave("gone");
    leave("another");
    EXPECT_EQ(ctl({"list", "--names"}).output, "Sound Effects\nalpha\nBeta\nZebra\nzoom\n");
    EXPECT_EQ(ctl({"list", "--names", "--all"}).output,
              "Sound Effects\nalpha\nBeta\nZebra\nzoom\nanother\ngone\n")
        << "what does not run stands behind";
    support::ChildProcess monitor({TONVALECTL, "monitor"});
    const std::string added = "added Sound Effects 100%\nadded alpha 100%\nadded Beta 100%\n"
                              "added Zebra 100%\nadded zoom 100%\n";
    EXPECT_TRUE(support::waitUntil([&] { return lines(monitor.output()) >= 5; }));
    EXPECT_EQ(monitor.output(), added);
    EXPECT_TRUE(does({"ignore", "alpha"}));
    EXPECT_TRUE(support::waitUntil([&] { return lines(monitor.output()) > 5; }));
    EXPECT_EQ(monitor.output(), added + "removed alpha\n") << "and nothing of who moved up";
}

TEST_F(TonvalectlTest, ATableFitsTheTerminal) {
    startTonvale();
    const std::string name = "A program with a name that is far too long for the terminal";
    checkIn(pid, name);
    const support::ScopedVariable program("TONVALECTL", TONVALECTL);
    const auto inTerminal = [](const std::string& command) {
        return support::runCommand(
                   {"script", "-qec", "stty cols 50; \"$TONVALECTL\" " + command, "/dev/null"})
            .output;
    };
    const std::string table = inTerminal("list");
    EXPECT_NE(table.find("\nA program with a n…  "), std::string::npos) << table;
    for (const char* const command : {"list --json", "list --names", "list | cat"})
        EXPECT_NE(inTerminal(command).find(name), std::string::npos) << command;
}

TEST_F(TonvalectlTest, ALevelIsReadOnRequest) {
    startTonvale();
    auto& plugin = checkIn(pid, "player");
    EXPECT_TRUE(support::waitUntil([&] {
        plugin.reportLevel(pid, 0.456F);
        const QJsonObject program = programJson("player");
        return program["activity"] == 45 && program["playing"] == true;
    }));
    EXPECT_TRUE(support::waitUntil([&] { return programJson("player")["playing"] == false; }));
}

TEST_F(TonvalectlTest, EveryChangeActsLikeTheSlider) {
    startTonvale();
    auto& plugin = checkIn(pid, "Music Player");
    const struct {
        std::vector<std::string> arguments;
        std::string commands;
        QVariantMap apps;
        std::string line; // of the log
        std::string told; // by get
    } steps[] = {
        {{"set", "Music Player", "40"}, "9,40 ", setting(40), "volume changed to 0.40", "40%\n"},
        {{"set", "music", "+5%"}, "9,45 ", setting(45), "volume changed to 0.45", "45%\n"},
        {{"set", "MUSIC P", "-50"}, "9,0 ", setting(0), "volume changed to 0.00", "0%\n"},
        {{"mute", "mu"}, "10,1 ", setting(0, true), "' muted", "0% muted\n"},
        {{"set", "mu", "30%"}, "9,30 ", setting(30, true), "volume changed to 0.30", "30% muted\n"},
        {{"unmute", "mu"}, "10,0 ", setting(30), "' unmuted", "30%\n"},
        {{"toggle", "mu"}, "10,1 ", setting(30, true), "' muted", "30% muted\n"},
        {{"toggle", "mu"}, "10,0 ", setting(30), "' unmuted", "30%\n"},
        {{"reset", "mu"}, "9,100 ", {}, "volume changed to 1.00", "100%\n"}};
    for (const auto& step : steps) {
        SCOPED_TRACE(step.arguments[0] + " " + step.arguments.back());
        EXPECT_TRUE(does(step.arguments));
        EXPECT_TRUE(receives(plugin, pid, step.commands));
        EXPECT_TRUE(isStored(
            "Apps", step.apps.isEmpty() ? QVariant() : QVariantMap{{"Music Player", step.apps}}));
        EXPECT_TRUE(logs(step.line));
        EXPECT_EQ(ctl({"get", "Music Player"}).output, step.told);
    }
    EXPECT_EQ(json({"get", "mu", "--json"}).object()["name"], "Music Player");
}

TEST_F(TonvalectlTest, WhatDoesNotRunIsRememberedSetAndForgottenWithoutAMessage) {
    startTonvale();
    auto& other = checkIn(otherPid, "other");
    checkIn(pid, "player");
    EXPECT_TRUE(does({"set", "player", "40"}));
    leave("player");
    EXPECT_TRUE(programJson("player").isEmpty());
    const QJsonObject remembered = programJson("player", "--all");
    EXPECT_EQ(remembered["volume"], 40);
    EXPECT_EQ(remembered["running"], false);
    EXPECT_TRUE(remembered["pid"].isNull() && !remembered["pid"].isUndefined());
    takeCommands(other, pid);

    EXPECT_TRUE(does({"set", "pla", "+10"}));
    EXPECT_TRUE(isStored("Apps", QVariantMap{{"player", setting(50)}}));
    EXPECT_TRUE(does({"mute", "player"}));
    EXPECT_TRUE(isStored("Apps", QVariantMap{{"player", setting(50, true)}}));
    EXPECT_TRUE(logs("'player' muted"));
    const std::string line = "'player' volume changed to 0.50";
    EXPECT_EQ(log().find(line), log().rfind(line)) << "and the volume is what it was";
    EXPECT_EQ(ctl({"get", "player"}).output, "50% muted\n");
    EXPECT_EQ(takeCommands(other, pid), "") << "nobody to send anything to";
    auto& back = checkIn(pid, "player");
    EXPECT_EQ(ctl({"get", "player"}).output, "50% muted\n");

    EXPECT_TRUE(does({"forget", "player"}));
    EXPECT_TRUE(receives(back, pid, "9,100 10,0 ")) << "it is full and not muted";
    EXPECT_TRUE(isStored("Apps", QVariant()));
    EXPECT_TRUE(isStored("SeenApps", QVariantList{"other"}));
    const Result again = ctl({"forget", "player"});
    EXPECT_EQ(again.status, 4);
    EXPECT_EQ(again.errors, "tonvalectl: The program has no saved settings.\n") << "it runs";
    leave("player");
    EXPECT_TRUE(programJson("player", "--all").isEmpty());
    EXPECT_TRUE(logs("'player' forgotten"));
}

TEST_F(TonvalectlTest, IgnoresAndUnignores) {
    startTonvale();
    auto& plugin = checkIn(pid, "player");
    EXPECT_TRUE(does({"set", "player", "40"}));
    EXPECT_TRUE(does({"ignore", "pl"}));
    EXPECT_TRUE(support::waitUntil([&] { return programJson("player").isEmpty(); }));
    EXPECT_TRUE(isStored("CustomIgnoredApps", QVariantList{"player"}));
    EXPECT_TRUE(receives(plugin, pid, "9,40 9,100 10,0 ")) << "as if it had never been touched";
    const auto ignored = ctl({"list", "--ignored"}).output;
    EXPECT_TRUE(ignored.starts_with("player\n")) << ignored;
    EXPECT_TRUE(does({"unignore", "PLAYER"}));
    EXPECT_EQ(programJson("player")["volume"], 40) << "as it was";
    EXPECT_TRUE(isStored("CustomIgnoredApps", QVariant()));
    EXPECT_EQ(ctl({"unignore", "player"}).status, 4);
    EXPECT_TRUE(does({"unignore", "xcode"}));
    EXPECT_TRUE(isStored("DisabledBuiltInIgnoredApps", QVariantList{"Xcode"}));
    leave("player");
    EXPECT_TRUE(does({"ignore", "player"})) << "it is remembered, and so has a name";
    EXPECT_TRUE(isStored("CustomIgnoredApps", QVariantList{"player"}));
}

TEST_F(TonvalectlTest, IgnoresByNameWhatDoesNotRun) {
    startTonvale();
    checkIn(pid, "Xcode Helper");
    EXPECT_TRUE(does({"ignore", "Xcode"})) << "which it is already";
    EXPECT_FALSE(programJson("Xcode Helper").isEmpty());
    EXPECT_TRUE(does({"unignore", "Xcode"}));
    EXPECT_TRUE(isStored("DisabledBuiltInIgnoredApps", QVariantList{"Xcode"}));
    EXPECT_EQ(ctl({"unignore", "Xcode"}).errors, "tonvalectl: “Xcode” is not ignored.\n");
    EXPECT_TRUE(does({"ignore", "xcode"})) << "the built-in entry, and not what begins like it";
    EXPECT_TRUE(isStored("DisabledBuiltInIgnoredApps", QVariant()));
    EXPECT_TRUE(isStored("CustomIgnoredApps", QVariant()));
    EXPECT_FALSE(programJson("Xcode Helper").isEmpty());

    EXPECT_TRUE(does({"ignore", "Never Seen"}));
    EXPECT_TRUE(does({"ignore", "never seen"}));
    EXPECT_TRUE(isStored("CustomIgnoredApps", QVariantList{"Never Seen"}));
    EXPECT_TRUE(does({"unignore", "never"}));
    EXPECT_TRUE(isStored("CustomIgnoredApps", QVariant()));

    EXPECT_TRUE(does({"unignore", "Terminal"}));
    checkIn(otherPid, "Terminal");
    EXPECT_TRUE(does({"ignore", "Terminal"})) << "while it runs, too";
    EXPECT_TRUE(isStored("DisabledBuiltInIgnoredApps", QVariant()));
    EXPECT_TRUE(isStored("CustomIgnoredApps", QVariant()));
    EXPECT_TRUE(support::waitUntil([&] { return programJson("Terminal").isEmpty(); }));
    for (const char* const noName : {"", "\xff"})
        EXPECT_EQ(ctl({"ignore", noName}).status, 4);
}

TEST_F(TonvalectlTest, IgnoresTheSoundEffectsByTheNameThatIsShown) {
    startTonvale();
    checkIn(pid, "coreaudiod");
    EXPECT_TRUE(does({"ignore", "sound"}));
    EXPECT_TRUE(isStored("CustomIgnoredApps", QVariantList{"coreaudiod"}));
    EXPECT_TRUE(ctl({"list", "--ignored"}).output.starts_with("Sound Effects\n"));
    EXPECT_TRUE(does({"unignore", "sound"}));
    EXPECT_TRUE(isStored("CustomIgnoredApps", QVariant()));
    EXPECT_FALSE(programJson("Sound Effects").isEmpty());
}

TEST_F(TonvalectlTest, ReportsThatItsOutputIsLost) {
    const auto result = support::runCommand({"sh", "-c", "\"$0\" --help >/dev/full", TONVALECTL});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "tonvalectl: The output can't be written.\n");
}

TEST_F(TonvalectlTest, RefusesWithACodeAndOneLine) {
    EXPECT_EQ(ctl({"list"}).status, 3) << "nobody is there";
    EXPECT_EQ(ctl({"monitor"}).status, 3);
    EXPECT_EQ(ctl({"set", "player", "fast"}).status, 6) << "which is wrong whoever is there";
    startTonvale();
    checkIn(pid, "Firefox");
    checkIn(otherPid, "Firewatch");
    const struct {
        std::vector<std::string> arguments;
        int status;
        const char* why;
    } cases[] = {{{}, 2, "--help"},
                 {{"play"}, 2, "play"},
                 {{"set", "Firefox"}, 2, "set"},
                 {{"get", "nobody"}, 4, "nobody"},
                 {{"get", ""}, 4, "program"},
                 {{"toggle", "fire"}, 5, "Firefox, Firewatch"},
                 {{"forget", "Fire"}, 5, "Firefox, Firewatch"},
                 {{"set", "fire", "50"}, 5, "Firefox, Firewatch"},
                 {{"set", "Firefox", "101"}, 6, "101"},
                 {{"set", "Firefox", ""}, 6, "0 to 100"},
                 {{"default", "+5"}, 6, "+5"}};
    for (const auto& each : cases) {
        const Result result = ctl(each.arguments);
        SCOPED_TRACE(result.errors);
        EXPECT_EQ(result.status, each.status);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(lines(result.errors), 1);
        EXPECT_TRUE(result.errors.starts_with("tonvalectl: "));
        EXPECT_NE(result.errors.find(each.why), std::string::npos);
    }
    EXPECT_EQ(programJson("Firefox")["volume"], 100);
    const std::string address = bus_->address();
    bus_.reset();
    EXPECT_EQ(ctl({"list"}).status, 8) << "no bus at all";
    const support::ScopedVariable gone("DBUS_SESSION_BUS_ADDRESS", address);
    EXPECT_EQ(ctl({"list"}).status, 8);
}

TEST_F(TonvalectlTest, ShowsWhyAProgramCannotBeControlled) {
    startTonvale();
    auto& plugin = checkIn(pid, "player");
    support::BusConnection reports(bus_->address());
    const QString name = "com.quarnel.Tonvale.Plugin";
    EXPECT_TRUE(reports->registerService(name));
    const auto tell = [&](const char* reason) {
        reports.say("/com/quarnel/Tonvale/Plugin", name, "NotControllable", {pid, reason});
    };
    EXPECT_TRUE(support::waitUntil([&] {
        tell("it plays past everybody");
        return programJson("player")["controllable"] == false;
    }));
    for (const auto& arguments : std::vector<std::vector<std::string>>{
             {"set", "player", "50"}, {"mute", "player"}, {"toggle", "player"}}) {
        const Result result = ctl(arguments);
        EXPECT_EQ(result.status, 7);
        EXPECT_NE(result.errors.find("it plays past everybody"), std::string::npos);
    }
    EXPECT_NE(support::runCommand({"busctl", "--user", "call", "com.quarnel.Tonvale",
                                   "/com/quarnel/Tonvale", "com.quarnel.Tonvale.Mixer",
                                   "SetRemembered", "sib", "player", "50", "false"})
                  .status,
              0);
    EXPECT_EQ(takeCommands(plugin, pid), "");
    tell("");
    EXPECT_TRUE(support::waitUntil([&] { return ctl({"mute", "player"}).status == 0; }));

    tell("it does so again");
    EXPECT_TRUE(support::waitUntil([&] { return programJson("player")["controllable"] == false; }));
    EXPECT_EQ(ctl({"mute", "player"}).status, 7);
    EXPECT_EQ(ctl({"unmute", "player"}).status, 0) << "in memory";
    EXPECT_EQ(programJson("player")["muted"], false);
    EXPECT_EQ(ctl({"toggle", "player"}).status, 7);
}

TEST_F(TonvalectlTest, WhoCallsDuringTheStartIsAnswered) {
    for (int i = 0; i < 3; ++i) {
        tonvale_.emplace(std::vector<std::string>{TONVALE_PROGRAM});
        Result result{3, {}, {}};
        EXPECT_TRUE(support::waitUntil([&] {
            result = ctl({"list", "--json"});
            return result.status != 3;
        }));
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(tonvale_->stop(), 0);
    }
}
