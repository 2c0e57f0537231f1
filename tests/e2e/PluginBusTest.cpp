#include "e2e/BusReports.h"
#include "e2e/PreferencesFixture.h"
#include "support/BusConnection.h"

#include <algorithm>

// What the plug-in tells the application beside the socket.
namespace {

using PluginBusTest = PreferencesFixture;

/// Tells the plug-in as the application does. Returns the error's name, else nothing.
QString tell(support::BusConnection& bus, const QByteArray& preferences) {
    const QString name = "com.quarnel.Tonvale.Plugin";
    auto call =
        QDBusMessage::createMethodCall(name, "/com/quarnel/Tonvale/Plugin", name, "Remember");
    call.setArguments({"/elsewhere", preferences, QStringList()});
    return bus->call(call).errorName();
}

} // namespace

TEST_F(PluginBusTest, AnotherMixersChangesAreReported) {
    save({50, false});
    startAll();
    EXPECT_TRUE(hearsConstant(level * gainOf(50)));
    const std::uint32_t pid = player_->pid();
    const BusReports reports;
    application_->setVolume(pid, 60);
    EXPECT_TRUE(hearsConstant(level * gainOf(60)));
    outlastRest();
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
    outlastRest();
    setElsewhereOnly(next, 20);
    EXPECT_TRUE(reports.tellLast(quiet.pid(), 20, false));
    EXPECT_EQ(reports.changes.size(), 1U);
}

TEST_F(PluginBusTest, WhatAPageSetsIsHeardButIsNoChange) {
    save({60, false, nullptr, "firefox"});
    application_.emplace();
    startPlugin();
    const BusReports reports;
    Player page(1, 0ms, level, "firefox");
    page.play();
    awaitCheckin(page);
    const double most = level * gainOf(60);
    EXPECT_TRUE(hearsConstant(most));
    for (const int percent : {30, 100, 0, 130, 50}) {
        setElsewhereOnly(page, percent);
        EXPECT_TRUE(hearsConstant(most * gainOf(std::min(percent, 100)))) << percent;
    }
    muteElsewhere(onlyStream(page), true);
    EXPECT_TRUE(hearsConstant(0));
    muteElsewhere(onlyStream(page), false);
    EXPECT_TRUE(hearsConstant(most * gainOf(50)));
    outlastRest();
    ASSERT_TRUE(tells("wanted 60 % not muted, remembered 60 % not muted"));
    ASSERT_TRUE(tells("wanted 60 % not muted, own volume 50 % not muted, has 30 % not muted"));
    EXPECT_TRUE(reportsLevel(page.pid(), level * gainOf(50))) << plugin_->output();

    plugin_.reset();
    startPlugin();
    awaitCheckin(page);
    ASSERT_TRUE(tells("wanted 60 % not muted, own volume 50 % not muted, has 30 % not muted"));
    page.play();
    EXPECT_TRUE(hearsConstant(most * (gainOf(50) + 1))) << "its next stream begins anew";
    EXPECT_TRUE(reports.changes.empty());
}

TEST_F(PluginBusTest, AVolumeThatAProgramBeginsWithIsHeardButIsNoChange) {
    save({60, false, nullptr, "pulse_player"});
    application_.emplace();
    startPlugin();
    const BusReports reports;
    ASSERT_TRUE(tells("sound server: connected"));
    support::ChildProcess player({PULSE_PLAYER, "0", std::to_string(level), "50"});
    ASSERT_TRUE(waitUntil([&] { return player.outputSize() > 0; }));
    player.signal(SIGUSR1);
    const auto heard = recorder_->record(1s).channels[0];
    EXPECT_LE(*std::ranges::max_element(heard), level * gainOf(60) + 1e-4);
    EXPECT_TRUE(hearsConstant(level * gainOf(50)));
    outlastRest();
    EXPECT_TRUE(tells("wanted 60 % not muted, remembered 60 % not muted"));
    EXPECT_TRUE(reports.changes.empty());
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
        outlastRest();
    }
    setElsewhereOnly(player, 30);
    EXPECT_TRUE(hearsConstant(level * gainOf(30)));
    outlastRest();
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
        outlastRest();
        EXPECT_EQ(reports.obstacles.size(), 3U);
        plugin_.reset();
        application_.reset();
    }
}

TEST_F(PluginBusTest, OnlyTheApplicationIsListenedTo) {
    startPluginWith({50, false});
    Player player;
    player.play();
    EXPECT_TRUE(hearsConstant(level * gainOf(50)));
    const QByteArray preferences = QByteArray::fromStdString(textOf({30, false}));
    const QString denied = "org.freedesktop.DBus.Error.AccessDenied";
    const QString invalid = "org.freedesktop.DBus.Error.InvalidArgs";
    support::BusConnection stranger(qgetenv("DBUS_SESSION_BUS_ADDRESS").toStdString());
    EXPECT_EQ(tell(stranger, preferences), denied);
    {
        support::BusConnection application(qgetenv("DBUS_SESSION_BUS_ADDRESS").toStdString());
        EXPECT_TRUE(application->registerService("com.quarnel.Tonvale"));
        EXPECT_EQ(tell(stranger, preferences), denied) << "another one";
        EXPECT_EQ(tell(application, "no property list"), invalid);
        EXPECT_EQ(tell(application, preferences + QByteArray(1 << 20, ' ')), invalid);
        ASSERT_TRUE(tells("wanted 50 %"));
        EXPECT_EQ(tell(application, preferences), QString());
        save({60, false});
        EXPECT_TRUE(hearsConstant(level * gainOf(30))) << "the file is only noted";
        EXPECT_EQ(tell(application, preferences + QByteArray(1 << 20, ' ')), invalid);
        save({70, false});
        EXPECT_TRUE(tells("wanted 70 %")) << "nobody knows what it remembers now";
        EXPECT_EQ(tell(application, preferences), QString());
        ASSERT_TRUE(tells("wanted 30 %"));
    }
    ASSERT_TRUE(tells("preferences: /elsewhere, not " + own_.string()));
    EXPECT_EQ(tell(stranger, preferences), denied) << "it has gone";
    EXPECT_TRUE(hearsConstant(level * gainOf(30)));
}
