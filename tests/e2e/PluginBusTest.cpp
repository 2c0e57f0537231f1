#include "e2e/BusReports.h"
#include "e2e/PreferencesFixture.h"

// What the plug-in tells the application beside the socket.
namespace {

using PluginBusTest = PreferencesFixture;

} // namespace

TEST_F(PluginBusTest, AnotherMixersChangesAreTold) {
    save({50, false});
    startAll();
    EXPECT_TRUE(hearsConstant(level * gainOf(50)));
    const std::uint32_t pid = player_->pid();
    const BusReports reports;
    application_->setVolume(pid, 60);
    EXPECT_TRUE(hearsConstant(level * gainOf(60)));
    outlastHold();
    setElsewhereOnly(*player_, 30);
    EXPECT_TRUE(reports.tellLast(pid, 30, false));
    muteElsewhere(onlyStream(*player_), true);
    EXPECT_TRUE(reports.tellLast(pid, 30, true));
    save({30, true}); // as the application does with what it hears
    muteElsewhere(onlyStream(*player_), false);
    EXPECT_TRUE(reports.tellLast(pid, 30, false));
    save({30, false});
    EXPECT_EQ(reports.changes.size(), 3U);

    application_.reset();
    setElsewhereOnly(*player_, 70);
    EXPECT_TRUE(hearsConstant(level * gainOf(70)));
    ASSERT_TRUE(tells("wanted 70 %"));
    EXPECT_EQ(reports.changes.size(), 3U) << "nobody is there to hear it";
    application_.emplace();
    EXPECT_TRUE(reports.tellLast(pid, 70, false));
    EXPECT_TRUE(hearsConstant(level * gainOf(70))) << "although the file says another";
    player_.reset();
    Player next;
    next.play();
    EXPECT_TRUE(hearsConstant(level * gainOf(70)));
    EXPECT_EQ(reports.changes.size(), 4U);
}

TEST_F(PluginBusTest, WhatIsFoundAtItsComingIsNotMadeLouderAndIsNoChange) {
    Player quiet;
    quiet.play();
    setElsewhereOnly(quiet, 30);
    EXPECT_TRUE(hearsConstant(level * gainOf(30)));
    save({50, false});
    const BusReports reports;
    application_.emplace();
    startPlugin();
    awaitCheckin(quiet);
    ASSERT_TRUE(tells("wanted 30 % not muted, remembered 50 % not muted"));
    quiet.play();
    EXPECT_TRUE(hearsConstant(2 * level * gainOf(30))) << "its next stream is as quiet";
    EXPECT_TRUE(reports.changes.empty()) << "what is remembered would be lost";
    Player next;
    next.play();
    EXPECT_TRUE(hearsConstant(3 * level * gainOf(30))) << "so is its next process";
    outlastHold();
    setElsewhereOnly(next, 20);
    EXPECT_TRUE(reports.tellLast(quiet.pid(), 20, false));
    EXPECT_EQ(reports.changes.size(), 1U);
}

TEST_F(PluginBusTest, WithoutABusOtherMixersChangesAreKeptAllTheSame) {
    application_.emplace();
    Player player;
    player.play();
    {
        const support::PrivateBus bus;
        startPlugin();
        ASSERT_TRUE(tells("sound server: connected"));
        awaitCheckin(player);
        outlastHold();
    }
    setElsewhereOnly(player, 30);
    EXPECT_TRUE(hearsConstant(level * gainOf(30)));
    player.play();
    EXPECT_TRUE(hearsConstant(2 * level * gainOf(30)));
    EXPECT_TRUE(plugin_->isRunning());
    EXPECT_EQ(plugin_->stop(), 0) << plugin_->output();
}

TEST_F(PluginBusTest, WhatCannotBeSetIsToldWithAReason) {
    for (const char* const kind : {"filter", "iec958", "dsd"}) {
        SCOPED_TRACE(kind);
        application_.emplace();
        startPlugin();
        const BusReports reports;
        support::ChildProcess player({ODD_PLAYER, kind});
        const auto pid = static_cast<uint>(player.pid());
        const auto tellsOf = [&](std::size_t count, bool isOpen) {
            return waitUntil([&] { return reports.obstacles.size() == count; }) &&
                   reports.obstacles.back().first == pid &&
                   reports.obstacles.back().second.isEmpty() == isOpen;
        };
        EXPECT_TRUE(tellsOf(1, false));
        application_.reset();
        application_.emplace();
        EXPECT_TRUE(tellsOf(2, false)) << "a new application does not know yet";
        player.signal(SIGUSR1);
        EXPECT_TRUE(tellsOf(3, true)) << "one stream is enough";
        Player other;
        other.play();
        awaitCheckin(other);
        outlastHold();
        EXPECT_EQ(reports.obstacles.size(), 3U);
        plugin_.reset();
        application_.reset();
    }
}
