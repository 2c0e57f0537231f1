#include "e2e/PlayerFixture.h"
#include "platform/loop/Timer.h"
#include "plugin/server/WriteLanes.h"

#include <map>

namespace {

/// The greatest difference of two samples that follow each other. Silence is left out: a busy
/// machine lets a program miss a cycle.
double greatestJump(std::vector<float> samples) {
    std::erase_if(samples, [](float sample) { return std::abs(sample) <= inaudible; });
    double jump = 0;
    for (std::size_t i = 1; i < samples.size(); ++i)
        jump = std::max(jump, std::abs(static_cast<double>(samples[i]) - samples[i - 1]));
    return jump;
}

class PluginVolumeTest : public PlayerFixture {
  protected:
    /// Ends the plug-in's connection to the sound server, does something, and waits for the next.
    template <typename Action>
    void whileDisconnected(Action action) {
        const auto connections = [&] {
            return timesIn(plugin_->output(), "Connected to the sound server");
        };
        const std::size_t before = connections();
        plugin_->signal(SIGSTOP);
        EXPECT_EQ(runCommand({"pw-cli", "destroy", clientOfPlugin()}).status, 0);
        action();
        plugin_->signal(SIGCONT);
        EXPECT_TRUE(waitUntil([&] { return connections() > before; })) << plugin_->output();
    }

    /// The plug-in's output once it has read the preferences and connected to the sound server.
    std::string outputAtStart() {
        EXPECT_TRUE(waitUntil([&] {
            return timesIn(plugin_->output(), "preferences") == 1 &&
                   timesIn(plugin_->output(), "Connected to the sound server") == 1;
        }));
        return plugin_->output();
    }

    /// The connection that it watches the server over: the first that it made.
    std::string clientOfPlugin() {
        std::map<int, int> ids; // by serial
        for (const auto& object : jsonOf({"pw-dump"})) {
            const QJsonValue properties = object[u"info"][u"props"];
            if (object[u"type"].toString() == "PipeWire:Interface:Client" &&
                properties["pipewire.sec.pid"].toInt() == plugin_->pid())
                ids[properties["object.serial"].toInt()] = object[u"id"].toInt();
        }
        EXPECT_FALSE(ids.empty()) << "the plug-in has no connection";
        return ids.empty() ? "" : std::to_string(ids.begin()->second);
    }
};

/// In a session of its own, which takes a while to recover from a crowd.
class PluginCrowdTest : public PluginVolumeTest {};

} // namespace

TEST_F(PluginVolumeTest, TheBalanceIsKept) {
    support::ChildProcess surround({"paplay", "--raw", "--channels=6", "/dev/zero"});
    Player& player = startPlayer();
    const auto pid = static_cast<std::uint32_t>(surround.pid());
    ASSERT_TRUE(waitUntil([&] { return application_->programs().size() == 2; }));
    ASSERT_TRUE(waitUntil([&] { return shownStreams(pid).size() == 1; }));
    outlastRest();
    setElsewhere(onlyStream(player), {100, 50});
    setElsewhere(shownStreams(pid).front(), {100, 50, 20, 40, 60, 80});
    const auto before = shownStreams(pid).front().percents;
    ASSERT_EQ(before.size(), 6U);
    application_->setVolume(player.pid(), 0);
    EXPECT_TRUE(hearsConstant(0));
    application_->setVolume(player.pid(), 50);
    EXPECT_TRUE(hearsConstant(level * gainOf(50)));
    EXPECT_NEAR(recorder_->record(100ms).channels[1].back(), level * gainOf(25), 1e-4);
    application_->setVolume(pid, 50);
    std::vector<int> halved = before;
    for (int& percent : halved)
        percent /= 2;
    EXPECT_TRUE(waitUntil([&] { return shownStreams(pid).front().percents == halved; }));
}

TEST_F(PluginVolumeTest, AChangeInAnotherMixerAppliesToTheNextStreamAndIsNotReverted) {
    Player& player = startPlayer();
    application_->setVolume(player.pid(), 50);
    EXPECT_TRUE(hearsConstant(level * gainOf(50)));
    outlastRest();
    const ShownStream first = onlyStream(player);
    for (const int percent : {80, 120, 40}) {
        setElsewhere(first, {percent});
        EXPECT_TRUE(hearsConstant(level * gainOf(percent)));
        const auto samples = recorder_->record(500ms).channels[0];
        EXPECT_LT(greatestJump(samples), 1e-4) << "it stays";
    }
    ASSERT_TRUE(tells("wanted 40 % not muted, remembered 40 % not muted"));
    player.play();
    EXPECT_TRUE(hearsConstant(2 * level * gainOf(40)));
    outlastRest();
    ASSERT_EQ(shownStreams(player.pid()).size(), 2U);
    setElsewhere(shownStreams(player.pid()).back(), {60});
    EXPECT_TRUE(hearsConstant(level * (gainOf(40) + gainOf(60)))) << "others are left alone";
    application_->setVolume(player.pid(), 20);
    EXPECT_TRUE(hearsConstant(2 * level * gainOf(20))) << "the application's word is for all";

    muteElsewhere(first, true);
    EXPECT_TRUE(hearsConstant(level * gainOf(20)));
    ASSERT_TRUE(tells("wanted 20 % muted, remembered 20 % muted"));
    player.play();
    EXPECT_TRUE(waitUntil([&] { return shownStreams(player.pid()).size() == 3; }));
    outlastRest();
    EXPECT_TRUE(shownStreams(player.pid()).back().muted);
    EXPECT_TRUE(hearsConstant(level * gainOf(20)));
}

TEST_F(PluginVolumeTest, WhatIsHeardIsNotMadeLouderByANewConnection) {
    Player& player = startPlayer();
    player.play();
    application_->setVolume(player.pid(), 50);
    EXPECT_TRUE(hearsConstant(2 * level * gainOf(50)));
    const auto both = shownStreams(player.pid());
    ASSERT_EQ(both.size(), 2U);
    whileDisconnected([&] {
        setElsewhere(both.front(), {80});
        setElsewhere(both.back(), {20});
    });
    EXPECT_TRUE(hearsConstant(level * (gainOf(50) + gainOf(20))));
    outlastHold();
    EXPECT_TRUE(hearsConstant(level * (gainOf(50) + gainOf(20)))) << "and it stays";
    player.play();
    EXPECT_TRUE(hearsConstant(level * (gainOf(50) + 2 * gainOf(20))));
}

TEST_F(PluginVolumeTest, ADragMakesNoJump) {
    Player& player = startPlayer();
    outlastHold();
    EXPECT_TRUE(hearsConstant(level));
    // At once to the other end, then back and forth before either end is reached. 1 is heard as
    // good as nothing, but is not the silence of a missed cycle.
    const std::vector<int> drag{1,   1,   1,   1,  1,  1,  100, 100, 100,
                                100, 100, 100, 60, 20, 70, 10,  100};
    std::size_t next = 0;
    std::optional<platform::Timer> pointer;
    pointer.emplace(loop_, [&] {
        application_->setVolume(player.pid(), drag.at(next++));
        if (next < drag.size())
            pointer->start(90ms);
    });
    // A cycle of the graph is longer than the time between two steps and may see both.
    const double allowed = level * (1 - gainOf(90)) + 1e-4;
    double jump = 0;
    float quietest = 0;
    float last = 0;
    for (int take = 0; take < 10; ++take) { // a busy machine serves a program late now and then
        next = 0;
        pointer->start({});
        const auto samples = recorder_->record(2800ms).channels[0];
        last = samples.back();
        jump = greatestJump(samples);
        quietest = level;
        for (const float sample : samples)
            quietest = sample > inaudible ? std::min(quietest, sample) : quietest;
        if (jump <= allowed && quietest < 1e-6F && std::abs(last - level) < 1e-4F)
            return;
    }
    ADD_FAILURE() << "a jump of " << jump << ", down to " << quietest << ", at the end " << last;
}

TEST_F(PluginVolumeTest, AnEndInTheMiddleOfAChangeLeavesWhatWasAskedFor) {
    Player& player = startPlayer();
    outlastHold();
    application_->setVolume(player.pid(), 10);
    ASSERT_TRUE(waitUntil([&] { return onlyStream(player).percents.front() < 100; }));
    plugin_->signal(SIGTERM);
    EXPECT_EQ(plugin_->wait(), 0);
    EXPECT_TRUE(hearsConstant(level * gainOf(10)));
}

TEST_F(PluginVolumeTest, ManyAndShortStreamsAreNothingToWriteAbout) {
    Player brief(20, 5ms, level, "brief");
    const std::string atStart = outputAtStart();
    Player crowd(60, 0ms, 0.5F / 60);
    crowd.play();
    awaitCheckin(crowd);
    for (int i = 0; i < 15; ++i) {
        brief.play();
        recorder_->record(50ms);
    }
    // On a busy machine streams are over before the plug-in has seen them.
    EXPECT_TRUE(waitUntil([&] {
        brief.play();
        recorder_->record(50ms);
        return hasCheckedIn(brief.pid());
    }));
    application_->setVolume(crowd.pid(), 50);
    EXPECT_TRUE(hearsConstant(0.5 * gainOf(50)));
    EXPECT_EQ(plugin_->output(), atStart);
}

TEST_F(PluginCrowdTest, HundredsOfStreamsNeedFewConnectionsEvenIfAProgramIsStopped) {
    constexpr int each = 100;
    const std::string atStart = outputAtStart();
    std::vector<std::unique_ptr<Player>> players;
    while (players.size() < 3)
        players.push_back(
            std::make_unique<Player>(each, 0ms, 0.0F, "player-" + std::to_string(players.size())));
    Player stopped(2, 0ms, 0.0F, "stopped");
    // One to listen, those that all share, and one for each program that a busy machine keeps from
    // answering soon.
    const std::size_t few = 1 + WriteLanes::mostShared + players.size() + 1;
    std::size_t connections = 0;
    const auto allHave = [&](std::size_t streams, const std::string& percent) {
        return waitUntil([&] {
            connections = std::max(connections, serverConnections());
            return timesIn(runPlugin({"--status"}).output,
                           ": wanted " + percent + " %, has " + percent + " %") == streams;
        });
    };
    for (const auto& player : players)
        player->play();
    stopped.play();
    awaitCheckin(stopped);
    for (const auto& player : players) {
        awaitCheckin(*player);
        application_->setVolume(player->pid(), 50);
    }
    EXPECT_TRUE(allHave(std::size_t{3} * each, "50")) << runPlugin({"--status"}).output;
    EXPECT_LE(connections, few);

    stopped.process().signal(SIGSTOP);
    application_->setVolume(stopped.pid(), 70);
    for (const auto& player : players)
        application_->setVolume(player->pid(), 60);
    EXPECT_TRUE(allHave(std::size_t{3} * each, "60")) << runPlugin({"--status"}).output;
    EXPECT_LE(connections, few);
    stopped.process().signal(SIGCONT);
    EXPECT_TRUE(allHave(2, "70")) << runPlugin({"--status"}).output;
    EXPECT_TRUE(hasIdleConnections()) << "what is of no use goes";
    EXPECT_EQ(plugin_->output(), atStart);
}
