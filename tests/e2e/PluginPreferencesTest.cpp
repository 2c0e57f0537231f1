#include "e2e/BusReports.h"
#include "e2e/PreferencesFixture.h"

namespace fs = std::filesystem;

namespace {

using PluginPreferencesTest = PreferencesFixture;

/// With a session manager that restores to each stream the last volume of one of its kind.
class PluginPreferencesMemoryTest : public PluginPreferencesTest {
  protected:
    static void SetUpTestSuite() { session.emplace(support::PrivateAudioSession::Memory::kept); }
};

} // namespace

TEST_F(PluginPreferencesMemoryTest, RememberedVolumesHoldWithoutTheApplication) {
    startPluginWith({50, false});
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(beginsAt(50));
    save({50, true});
    Player muted(1, 600ms);
    muted.play();
    EXPECT_LE(recorder_->record(900ms).peak(), inaudible);
    save({});
    Player plain;
    plain.play();
    EXPECT_TRUE(hearsConstant(level)) << "the session manager would restore another";
}

TEST_F(PluginPreferencesMemoryTest, AProgramWithoutAnEntryIsAtFullVolumeFromTheFirstSample) {
    Player player(1, 600ms);
    player.play();
    setElsewhereOnly(player, 30);
    EXPECT_TRUE(hearsConstant(0)) << "until it has ended";
    player.play();
    EXPECT_NEAR(recorder_->record(900ms).peak(), level * gainOf(30), 1e-4) << "it is restored";
    startPluginWith({});
    EXPECT_TRUE(beginsAt(100));
}

TEST_F(PluginPreferencesTest, WhatIsStartedThroughALinkHasFromTheFirstSampleWhatItsFileHad) {
    const support::NamedCopy copy(STREAM_PLAYER, "stream_player");
    const std::string link = fs::path(copy.path()).parent_path() / "singer";
    fs::create_symlink(copy.path(), link);
    startPluginWith({50, false});
    support::ChildProcess singer({link, "1", "600", std::to_string(level)});
    ASSERT_TRUE(waitUntil([&] { return singer.outputSize() > 0; }));
    singer.signal(SIGUSR1);
    EXPECT_NEAR(recorder_->record(900ms).peak(), level * gainOf(50), 1e-4);
    EXPECT_TRUE(tells("singer (pid " + std::to_string(singer.pid())));
}

TEST_F(PluginPreferencesTest, WhatPlaysFollowsTheFileAndTheCopy) {
    startPluginWith({50, false});
    Player player;
    player.play();
    EXPECT_TRUE(hearsConstant(level * gainOf(50)));
    save({20, false});
    EXPECT_TRUE(hearsConstant(level * gainOf(20)));
    save({20, true});
    EXPECT_TRUE(hearsConstant(0));
    fs::remove(own_);
    fs::create_directory(copy_.parent_path());
    writeFile(copy_, textOf({60, false}));
    EXPECT_TRUE(hearsConstant(level * gainOf(60))) << "the copy stands in";
    writeFile(copy_, textOf({}));
    EXPECT_TRUE(hearsConstant(level));
}

TEST_F(PluginPreferencesTest, ItReadsTheFileWhenTheApplicationRequestsItOrStarts) {
    // The folder of the link in the middle is not watched.
    const support::PrivateFolder middle;
    const support::PrivateFolder end;
    const auto lead = [&](int percent) {
        const fs::path target = end.path() / std::to_string(percent);
        writeFile(target, textOf({percent, false}));
        fs::remove(middle.path() / "link");
        fs::create_symlink(target, middle.path() / "link");
    };
    writeFile(end.path() / "70", textOf({70, false}));
    lead(70);
    fs::create_symlink(middle.path() / "link", own_);
    startAll();
    EXPECT_TRUE(hearsConstant(level * gainOf(70)));
    writeFile(end.path() / "50", textOf({50, false})); // and no new file below
    recorder_->record(200ms);
    lead(50);
    application_->send(kMVCommIgnoreListChanged, 0, 0);
    EXPECT_TRUE(hearsConstant(level * gainOf(50)));
    application_.reset();
    writeFile(end.path() / "30", textOf({30, false}));
    recorder_->record(200ms);
    lead(30);
    application_.emplace();
    EXPECT_TRUE(hearsConstant(level * gainOf(30)));
}

TEST_F(PluginPreferencesTest, AnIgnoredProgramIsFreedAndThenLeftAlone) {
    save({50, false});
    startAll();
    EXPECT_TRUE(hearsConstant(level * gainOf(50)));
    outlastRest();
    const BusReports reports;
    save({50, false, "STREAM_PLAYER"});
    EXPECT_TRUE(hearsConstant(level));
    ASSERT_TRUE(tells("nothing wanted, remembered 50 % not muted, ignored"));
    setElsewhereOnly(*player_, 40);
    EXPECT_TRUE(hearsConstant(level * gainOf(40)));
    save({20, true, "stream_player"});
    player_->play();
    EXPECT_TRUE(hearsConstant(level * gainOf(40) + level)) << "its next stream is as it comes";
    EXPECT_TRUE(reports.changes.empty());
    save({20, false});
    EXPECT_TRUE(hearsConstant(2 * level * gainOf(20))) << "it is remembered";
}

TEST_F(PluginPreferencesTest, AProgramIgnoredWhileItIsAwayIsFreedWhenItComes) {
    startPluginWith({50, false});
    save({50, false, "stream_player"});
    Player player(1, 400ms);
    player.play();
    ASSERT_TRUE(tells("nothing wanted, remembered 50 % not muted, ignored"));
    EXPECT_TRUE(tells("wanted 100 % not muted, has 100 % not muted"));
}

TEST_F(PluginPreferencesTest, NotificationSoundsHaveWhatIsRemembered) {
    startPluginWith({50, false, nullptr, "Sound Effects"});
    const auto remembers = [](const std::string& text) {
        return waitUntil([&] {
            return runCommand({"pw-metadata", "-n", "route-settings"}).output.find(text) !=
                   std::string::npos;
        });
    };
    EXPECT_TRUE(remembers("[0.125,0.125]"));
    save({20, true, nullptr, "Sound Effects"});
    EXPECT_TRUE(remembers(R"("mute":true)"));
    save({20, true, "coreaudiod", "Sound Effects"});
    EXPECT_TRUE(remembers("[1.0,1.0]"));
    EXPECT_TRUE(remembers(R"("mute":false)"));

    // Ignored while they are away.
    save({20, true, nullptr, "Sound Effects"});
    EXPECT_TRUE(remembers(R"("mute":true)"));
    stopServer();
    ASSERT_TRUE(tells("sound server: not connected"));
    save({20, true, "coreaudiod", "Sound Effects"});
    ASSERT_TRUE(tells("no program to tell it of"));
    restartServer();
    EXPECT_TRUE(remembers("[1.0,1.0]"));
}
