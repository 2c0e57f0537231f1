#include "e2e/ApplicationFixture.h"

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
    const auto ctl = [](std::vector<std::string> words) {
        words.insert(words.begin(), TONVALECTL);
        const auto result = runCommand(words);
        EXPECT_EQ(result.status, 0) << result.output;
    };
    writeFile(own_, R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)"
                    "<key>NewAppVolume</key><integer>30</integer></dict></plist>");
    startPlugin();
    ASSERT_TRUE(tells("sound server: connected"));
    EXPECT_TRUE(beginsAt(30)) << "also while nobody is there to remember it";
    startTonvale();
    EXPECT_TRUE(beginsAt(30));
    EXPECT_TRUE(isRemembered({30, false}));
    ctl({"set", "stream_player", "100"});
    EXPECT_TRUE(isRemembered({100, false}));
    EXPECT_TRUE(beginsAt(100)) << "it has been seen";
    ctl({"forget", "stream_player"});
    EXPECT_TRUE(waitUntil([&] {
        std::ifstream file(own_, std::ios::binary);
        const std::string text(std::istreambuf_iterator<char>(file), {});
        return text.find("stream_player") == std::string::npos;
    }));
    EXPECT_TRUE(beginsAt(30)) << "as if it had never been seen";
}
