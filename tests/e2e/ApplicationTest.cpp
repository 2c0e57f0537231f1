#include "e2e/ApplicationFixture.h"

#include "support/ScopedVariable.h"

namespace {

class ApplicationTest : public ApplicationFixture {
  protected:
    void TearDown() override {
        tonvale_.reset();
        plugin_.reset();
        ApplicationFixture::TearDown();
    }
};

} // namespace

TEST_F(ApplicationTest, VolumesSurviveTheEndOfEverybodyAndHoldWithoutTheApplication) {
    startTonvale();
    startPlugin();
    {
        Player player;
        player.play();
        ASSERT_TRUE(tells("(pid " + std::to_string(player.pid())));
        outlastRest();
        setElsewhereOnly(player, 40);
        EXPECT_TRUE(isRemembered({40, false}));
        EXPECT_TRUE(hearsConstant(level * gainOf(40)));
    }
    EXPECT_TRUE(hearsConstant(0));
    EXPECT_TRUE(beginsAt(40));
    const std::vector<std::pair<const char*, std::function<void()>>> events{
        {"the application is restarted",
         [this] {
             quitTonvale();
             startTonvale();
         }},
        {"the plug-in is restarted",
         [this] {
             plugin_->stop();
             startPlugin();
         }},
        {"the plug-in is killed",
         [this] {
             plugin_->stop(SIGKILL);
             startPlugin();
         }},
        {"the audio server is restarted", [this] { restartServer(); }},
        {"the application is killed",
         [this] {
             tonvale_->stop(SIGKILL);
             tonvale_.reset();
         }},
        {"and the audio server is restarted", [this] { restartServer(); }},
        {"and the plug-in is restarted",
         [this] {
             plugin_->stop();
             startPlugin();
         }},
        {"the application is there again", [this] { startTonvale(); }}};
    for (const auto& [what, happen] : events) {
        SCOPED_TRACE(what);
        happen();
        ASSERT_TRUE(tells("sound server: connected"));
        ASSERT_TRUE(beginsAt(40));
    }
    EXPECT_TRUE(isRemembered({40, false}));
}

TEST_F(ApplicationTest, WhatChangesWhileItIsAwayIsRememberedWhenItComes) {
    save({50, false});
    startPlugin();
    Player player;
    player.play();
    EXPECT_TRUE(hearsConstant(level * gainOf(50)));
    outlastRest();
    setElsewhereOnly(player, 70);
    ASSERT_TRUE(tells("wanted 70 % not muted, remembered 70 % not muted"));
    EXPECT_TRUE(isRemembered({50, false})) << "nobody is there who could";
    startTonvale();
    EXPECT_TRUE(isRemembered({70, false}));
    EXPECT_TRUE(hearsConstant(level * gainOf(70)));
    setElsewhereOnly(player, 100);
    EXPECT_TRUE(isRemembered({100, false}));
    EXPECT_TRUE(hearsConstant(level));
}

TEST_F(ApplicationTest, AProgramThatWasNeverSeenBeginsAtTheVolumeOfNewOnes) {
    writeFile(own_, R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)"
                    "<key>NewAppVolume</key><integer>30</integer></dict></plist>");
    startPlugin();
    ASSERT_TRUE(tells("sound server: connected"));
    EXPECT_TRUE(beginsAt(30)) << "also while nobody is there to remember it";
    startTonvale();
    EXPECT_TRUE(beginsAt(30));
    EXPECT_TRUE(isRemembered({30, false}));
    control({"set", "stream_player", "100"});
    EXPECT_TRUE(isRemembered({100, false}));
    EXPECT_TRUE(beginsAt(100)) << "it has been seen";
    control({"forget", "stream_player"});
    EXPECT_TRUE(waitUntil([&] {
        std::ifstream file(own_, std::ios::binary);
        const std::string text(std::istreambuf_iterator<char>(file), {});
        return text.find("stream_player") == std::string::npos;
    }));
    EXPECT_TRUE(beginsAt(30)) << "as if it had never been seen";
}

// What the plug-in reads is not what the application keeps, as it is where a service and a terminal
// have other variables.
TEST_F(ApplicationTest, ItSoundsAsItLooksWhateverFileThePluginReads) {
    const support::PrivateFolder other;
    const auto file = other.path() / own_.filename();
    const auto startOther = [&] {
        const support::ScopedVariable folder("XDG_CONFIG_HOME", other.path());
        startTonvale();
    };
    for (const bool isPluginFirst : {true, false}) {
        SCOPED_TRACE(isPluginFirst);
        save({20, false});
        writeFile(file, textOf({60, true}));
        Player player;
        player.play();
        if (isPluginFirst) {
            startPlugin();
            EXPECT_TRUE(hearsConstant(level * gainOf(20)));
            startOther();
        } else {
            startOther();
            startPlugin();
        }
        ASSERT_TRUE(showsAndSounds(player, {60, true}));
        ASSERT_TRUE(tells("preferences: " + file.string() + ", not " + own_.string()));
        control({"unmute", "stream_player"});
        control({"set", "stream_player", "70"});
        ASSERT_TRUE(showsAndSounds(player, {70, false}));
        save({30, false}); // which nobody keeps
        plugin_->stop(SIGKILL);
        startPlugin();
        ASSERT_TRUE(showsAndSounds(player, {70, false}));
        quitTonvale();
        ASSERT_TRUE(tells("application: not connected"));
        EXPECT_TRUE(tells("remembered 70 % not muted")) << "it keeps what it was told";
        writeFile(file, textOf({40, false}));
        startOther();
        ASSERT_TRUE(showsAndSounds(player, {40, false}));
        tonvale_.reset();
        plugin_.reset();
    }
}

TEST_F(ApplicationTest, WhatWasSetJustBeforeItWasKilledIsNotLost) {
    startPlugin();
    startTonvale();
    Player player;
    player.play();
    ASSERT_TRUE(showsAndSounds(player, {100, false}));
    bool isMuted = false;
    for (const int percent : {30, 55, 100, 45}) {
        SCOPED_TRACE(percent);
        isMuted = !isMuted;
        control({"set", "stream_player", std::to_string(percent)});
        control({isMuted ? "mute" : "unmute", "stream_player"});
        const auto hasArrived = [&] {
            const ShownStream stream = onlyStream(player);
            return stream.muted == isMuted && stream.percents.at(0) == percent;
        };
        ASSERT_TRUE(waitUntil(hasArrived));
        tonvale_->stop(SIGKILL);
        startTonvale();
        ASSERT_TRUE(showsAndSounds(player, {percent, isMuted}));
        ASSERT_TRUE(isRemembered({percent, isMuted}));
    }
}

TEST_F(ApplicationTest, WhatIsSetWhileThePluginIsAwayIsHeardWhenItIsBack) {
    startTonvale();
    Player player;
    player.play();
    for (const ProgramSetting& setting : {ProgramSetting{30, false}, {80, true}, {100, false}}) {
        SCOPED_TRACE(setting.percent);
        startPlugin();
        ASSERT_TRUE(tells("(pid " + std::to_string(player.pid())));
        ASSERT_TRUE(waitUntil([] { return items().size() == 2; }));
        plugin_->stop(SIGKILL);
        ASSERT_TRUE(waitUntil([] { return items().empty(); }));
        control({"set", "stream_player", std::to_string(setting.percent)});
        control({setting.muted ? "mute" : "unmute", "stream_player"});
        ASSERT_TRUE(isRemembered(setting));
        startPlugin();
        ASSERT_TRUE(showsAndSounds(player, setting));
        ASSERT_TRUE(isRemembered(setting));
        plugin_->stop();
    }
}
