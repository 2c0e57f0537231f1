#include "e2e/ApplicationFixture.h"

#include "platform/bus/DistributedNotification.h"
#include "support/ScriptedPlugin.h"

namespace fs = std::filesystem;

namespace {

class ApplicationTest : public ApplicationFixture {
  protected:
    void TearDown() override {
        tonvale_.reset();
        plugin_.reset();
        ApplicationFixture::TearDown();
        fs::remove_all(containers_.parent_path());
    }

    /// Sets the volume of a new program in another mixer when the application knows of it.
    void setVolumeOfNew(int percent) {
        Player player;
        player.play();
        ASSERT_TRUE(isKnown(player));
        outlastHold();
        setElsewhereOnly(player, percent);
        EXPECT_TRUE(isRemembered({percent, false}));
        EXPECT_TRUE(hearsConstant(level * gainOf(percent)));
        player.process().stop();
        EXPECT_TRUE(hearsConstant(0));
    }

    void restartSound() {
        for (const char* service :
             {session->pulseService, session->sessionManager, session->server})
            session->stop(service);
        for (const char* service :
             {session->server, session->sessionManager, session->pulseService})
            session->start(service);
        recorder_.emplace();
    }

    const fs::path containers_ = fs::path(std::getenv("HOME")) / "Library" / "Containers";
};

} // namespace

TEST_F(ApplicationTest, VolumesSurviveTheEndOfEverybodyAndHoldWithoutTheApplication) {
    startTonvale();
    startPlugin();
    setVolumeOfNew(40);
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
        {"the audio server is restarted", [this] { restartSound(); }},
        {"the application is killed",
         [this] {
             tonvale_->stop(SIGKILL);
             tonvale_.reset();
         }},
        {"and the audio server is restarted", [this] { restartSound(); }},
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

TEST_F(ApplicationTest, AMuteSurvivesAndEndsAsItBegan) {
    startTonvale();
    startPlugin();
    Player player;
    player.play();
    ASSERT_TRUE(isKnown(player));
    outlastHold();
    setElsewhereOnly(player, 60);
    muteElsewhere(onlyStream(player), true);
    EXPECT_TRUE(isRemembered({60, true}));
    quitTonvale();
    plugin_->stop();
    player.process().stop();
    restartSound();
    startPlugin();
    ASSERT_TRUE(tells("sound server: connected"));
    Player next;
    next.play();
    ASSERT_TRUE(tells("wanted 60 % muted, has 60 % muted"));
    outlastHold();
    EXPECT_LE(recorder_->record(300ms).peak(), inaudible);
    startTonvale();
    ASSERT_TRUE(isKnown(next));
    muteElsewhere(onlyStream(next), false);
    EXPECT_TRUE(isRemembered({60, false}));
    EXPECT_TRUE(hearsConstant(level * gainOf(60)));
}

TEST_F(ApplicationTest, WhatChangesWhileItIsAwayIsRememberedWhenItComes) {
    save({50, false});
    startPlugin();
    Player player;
    player.play();
    EXPECT_TRUE(hearsConstant(level * gainOf(50)));
    outlastHold();
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

TEST_F(ApplicationTest, NewContainersAreServedAndAnnouncedOnceForABurst) {
    constexpr int burst = 5;
    const auto socketIn = [this](int container) {
        return (containers_ / std::to_string(container) / "Data" / kMVCommSocketName).string();
    };
    int announcements = 0;
    int served = 0; // when the last one came
    const platform::DistributedNotificationObserver observer(
        QStringLiteral("com.quarnel.mivo.guiDidLaunch"), [&] {
            ++announcements;
            served = 0;
            for (int container = 0; container <= burst; ++container)
                served += platform::connectUnixSocket(socketIn(container)) ? 1 : 0;
        });
    ASSERT_TRUE(observer.isActive());
    startTonvale();
    ASSERT_TRUE(waitUntil([&] { return announcements == 1; })) << tonvale_->output();
    for (int container = 0; container < burst; ++container)
        fs::create_directories(fs::path(socketIn(container)).parent_path());
    EXPECT_TRUE(waitUntil([&] { return announcements > 1; })) << tonvale_->output();
    EXPECT_EQ(served, burst) << "whoever hears it can connect";

    fs::create_directories(fs::path(socketIn(burst)).parent_path());
    EXPECT_TRUE(waitUntil([&] { return served > burst; }));
    EXPECT_EQ(announcements, 3) << "at the launch, for the burst, for the last one";

    // Copying may be slower than the socket.
    EXPECT_TRUE(waitUntil(
        [&] { return fs::exists(containers_ / "1" / "Data" / "com.quarnel.Tonvale.plist"); }));
    support::ScriptedPlugin inside(socketIn(1));
    inside.checkIn(4711, "player");
    fs::remove_all(containers_ / "1");
    EXPECT_TRUE(waitUntil([&] { return inside.isEnded(); }));
    EXPECT_TRUE(tonvale_->isRunning());
}
