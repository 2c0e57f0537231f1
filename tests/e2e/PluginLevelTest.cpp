#include "e2e/PluginFixture.h"
#include "e2e/SilentApplication.h"
#include "plugin/host/PluginHost.h"
#include "plugin/levels/MeterLink.h"
#include "support/GraphStream.h"
#include "support/ManualClock.h"
#include "support/NamedCopy.h"
#include "support/SystemLogRecorder.h"

#include <atomic>
#include <memory>
#include <span>
#include <unistd.h>

using support::ChildProcess;
using support::PrivateAudioSession;
using support::runCommand;
using support::Tone;
using support::waitUntil;
using namespace std::chrono_literals;

namespace {

const QString player = "pw-cat";

class PluginLevelTest : public PluginFixture {
  protected:
    using Levels = std::vector<support::ListeningApplication::Level>;

    const Levels& levelsOf(const MVCommConnectionProcess& program) {
        return application_->levelsOf(program.pid);
    }

    static bool isNear(float level, double wanted) {
        return std::abs(static_cast<double>(level) - wanted) <= 0.05 * wanted;
    }

    /// Waits until the last `count` levels fulfil `condition`.
    template <typename Condition>
    bool levelsAre(const MVCommConnectionProcess& program, std::size_t count, Condition condition) {
        return waitUntil([&] {
            const Levels& levels = levelsOf(program);
            return levels.size() >= count &&
                   std::all_of(levels.end() - static_cast<std::ptrdiff_t>(count), levels.end(),
                               [&](const auto& each) { return condition(each.level); });
        });
    }

    bool levelIs(const MVCommConnectionProcess& program, double wanted, std::size_t count = 5) {
        return levelsAre(program, count, [&](float level) { return isNear(level, wanted); });
    }

    /// Waits until a level of the process is near what is wanted.
    bool isHeard(pid_t process, double wanted) {
        return waitUntil([&] {
            const Levels& levels = application_->levelsOf(static_cast<std::uint32_t>(process));
            return std::any_of(levels.begin(), levels.end(),
                               [&](const auto& each) { return isNear(each.level, wanted); });
        });
    }

    struct Node {
        QString mediaClass;
        qint64 serial;
        int id;

        bool operator==(const Node&) const = default;
    };

    static std::vector<Node> nodesNamed(const QString& name) {
        // What goes while it is dumped spoils the dump.
        QJsonArray dump;
        EXPECT_TRUE(waitUntil([&dump] { return !(dump = jsonOf({"pw-dump"})).isEmpty(); }));
        std::vector<Node> nodes;
        for (const auto& object : dump) {
            const QJsonObject properties = object[u"info"][u"props"].toObject();
            if (object[u"type"].toString().endsWith(u"Node") && properties[u"node.name"] == name)
                nodes.push_back({properties[u"media.class"].toString(),
                                 properties[u"object.serial"].toInteger(), object[u"id"].toInt()});
        }
        return nodes;
    }
    static std::vector<Node> metersInServer() { return nodesNamed("tonvale-meter"); }
    static bool hasMeters() { return !metersInServer().empty(); }
    static bool hasNoMeters() { return metersInServer().empty(); }

    /// Puts another sink of the same name in the place of the session's.
    static void makeSinkAnew() {
        for (const Node& node : nodesNamed(QLatin1String(PrivateAudioSession::sink)))
            runCommand({"pw-cli", "destroy", std::to_string(node.id)});
        const std::string name = std::string("sink_name=") + PrivateAudioSession::sink;
        EXPECT_EQ(
            runCommand({"pactl", "load-module", "module-null-sink", name, "rate=48000"}).status, 0);
    }
};

} // namespace

TEST_F(PluginLevelTest, LevelsAreThoseBeforeTheVolumeHoweverItChanges) {
    const Tone tone(Tone::Player::pwCat, toneFrequency, tonePeak);
    const auto program = awaitProgram(player);
    EXPECT_TRUE(levelIs(program, tonePeak));
    for (const int percent : {50, 10, 80}) {
        application_->forgetLevels();
        application_->setVolume(program.pid, percent);
        EXPECT_TRUE(hears(tonePeak * gainOf(percent)));
        EXPECT_TRUE(levelIs(program, tonePeak)) << percent;
        for (const auto& each : levelsOf(program))
            EXPECT_FALSE(each.level > 0.0F && !isNear(each.level, tonePeak))
                << each.level << " at " << percent << " %";
    }
}

TEST_F(PluginLevelTest, AProgramThatIsSilencedAndPlaysOnShowsAsPlaying) {
    const Tone tone(Tone::Player::pwCat, toneFrequency, tonePeak);
    const auto program = awaitProgram(player);
    for (const auto& [command, silent, loud] :
         {std::tuple{kMVCommSetMute, 1, 0}, {kMVCommSetVolume, 0, 100}}) {
        EXPECT_TRUE(levelIs(program, tonePeak));
        application_->send(command, program.pid, silent);
        EXPECT_TRUE(hears(0));
        EXPECT_TRUE(levelsAre(program, 25, [](float each) { return each > 0.0F && each < 0.1F; }));
        application_->send(command, program.pid, loud);
    }
    EXPECT_TRUE(levelIs(program, tonePeak));
}

TEST_F(PluginLevelTest, LevelsComeTwentyToThirtyTimesASecondWhateverTheGraphsCycleIs) {
    using Samples = std::chrono::duration<std::int64_t, std::ratio<1, 48000>>;
    constexpr auto takes = 2s;
    plugin_.reset();
    recorder_.reset();
    application_.reset();
    support::ManualClock clock;
    application_.emplace();
    const PluginHost plugin(loop_);
    std::atomic<std::int64_t> played = 0;
    const auto self = support::GraphStream::player([&played](std::span<float> samples) {
        std::fill(samples.begin(), samples.end(), 0.25F);
        played += static_cast<std::int64_t>(samples.size() / 2);
    });
    self->setActive(true);
    const auto pid = static_cast<std::uint32_t>(::getpid());
    const Levels& levels = application_->levelsOf(pid);
    // The clock goes by what is played, so that it does not matter how fast this machine is. What a
    // pause of the machine has left to catch up is left out.
    const auto playFor = [&](auto condition) {
        return waitUntil([&] {
            constexpr std::chrono::milliseconds most = 300ms;
            const auto passed =
                std::chrono::duration_cast<std::chrono::milliseconds>(Samples(played.exchange(0)));
            const auto end = clock.now() + std::min(passed, most);
            while (clock.now() < end) {
                clock.advance(1ms);
                support::serveEvents(); // the plug-in sends
                support::serveEvents(); // the application receives
            }
            return condition();
        });
    };
    const auto hearsSelf = [&] { return !levels.empty() && isNear(levels.back().level, 0.25); };
    ASSERT_TRUE(playFor(hearsSelf));
    for (const std::string cycle : {"1024", "8192", "0"}) {
        ASSERT_EQ(
            runCommand({"pw-metadata", "-n", "settings", "0", "clock.force-quantum", cycle}).status,
            0);
        const auto begin = clock.now();
        ASSERT_TRUE(playFor([&] { return clock.now() - begin > 1s; }));
        const std::size_t before = levels.size();
        ASSERT_TRUE(playFor([&] { return clock.now() - begin > 1s + takes; }));
        EXPECT_GE(levels.size() - before, 20U * takes.count());
        EXPECT_LE(levels.size() - before, 30U * takes.count());
        for (std::size_t i = before; i < levels.size(); ++i) {
            EXPECT_LE(levels[i].arrived - levels[i - 1].arrived, 60ms) << cycle;
            EXPECT_TRUE(isNear(levels[i].level, 0.25)) << cycle << ": " << levels[i].level;
        }
    }
}

TEST_F(PluginLevelTest, ThereAreMetersOnlyWhileAProgramPlaysAndTheApplicationListens) {
    EXPECT_TRUE(hasNoMeters());
    std::optional<Tone> tone(std::in_place, Tone::Player::pwCat, toneFrequency, tonePeak);
    EXPECT_TRUE(waitUntil(hasMeters));
    application_.reset();
    EXPECT_TRUE(waitUntil(hasNoMeters));
    EXPECT_TRUE(hears(tonePeak)) << "the program plays on";
    application_.emplace();
    EXPECT_TRUE(levelIs(awaitProgram(player), tonePeak));
    EXPECT_TRUE(hasMeters());
    tone.reset();
    EXPECT_TRUE(waitUntil(hasNoMeters));
}

TEST_F(PluginLevelTest, APausedProgramLeavesOneZeroAndNoMeters) {
    const auto self = support::GraphStream::player(
        [](std::span<float> samples) { std::fill(samples.begin(), samples.end(), 0.25F); });
    awaitProcess(::getpid());
    EXPECT_TRUE(hasNoMeters());
    application_.reset(); // which makes zeros of its own
    const SilentApplication application;
    const auto connection = application.acceptProgram(::getpid());
    for (int round = 0; round < 3; ++round) {
        std::vector<float> levels;
        const auto waitFor = [&](const auto& condition) {
            return waitUntil([&] {
                std::ranges::copy(receivedLevels(connection), std::back_inserter(levels));
                return condition();
            });
        };
        self->setActive(true);
        EXPECT_TRUE(waitFor([&] {
            return std::ranges::any_of(levels, [](float each) { return isNear(each, 0.25); });
        }));
        self->setActive(false);
        EXPECT_TRUE(waitFor([&] { return levels.back() == 0.0F; }));
        EXPECT_TRUE(waitUntil(hasNoMeters));
        recorder_->record(std::chrono::milliseconds(200)); // nothing follows
        waitFor([] { return true; });
        EXPECT_EQ(levels.back(), 0.0F);
        EXPECT_EQ(std::ranges::count(levels, 0.0F), 1);
    }
}

TEST_F(PluginLevelTest, ALinkToAStreamThatHasEndedIsNothingToWriteAbout) {
    plugin_.reset();
    struct : AudioServer::Listener {
        void serverConnected() override {}
        void serverLost() override {}
        void globalAdded(const AudioGlobal& /*global*/) override {}
        void globalRemoved(std::uint32_t /*id*/) override {}
    } listener;
    const support::SystemLogRecorder log;
    AudioServer server(loop_, listener);
    server.start();
    ASSERT_TRUE(waitUntil([&] { return server.hasListedAll(); }));
    constexpr std::uint32_t gone = 1U << 20U;
    const MeterLink link(*server.core(), {gone, gone, gone, gone}, [] {});
    EXPECT_TRUE(waitUntil([&] { return link.isLost(); }));
    for (const auto& line : log.lines())
        EXPECT_EQ(line.priority, platform::LogPriority::info) << line.text;
}

TEST_F(PluginLevelTest, NoOtherMixerListsMeters) {
    recorder_.reset();
    const Tone tone(Tone::Player::pwCat, toneFrequency, tonePeak);
    EXPECT_TRUE(levelIs(awaitProgram(player), tonePeak));
    EXPECT_EQ(runCommand({"pactl", "list", "short", "source-outputs"}).output, "");
    EXPECT_EQ(timesIn(runCommand({"pactl", "list", "short", "sink-inputs"}).output, "\n"), 1U);
    ASSERT_TRUE(hasMeters());
    for (const Node& meter : metersInServer())
        EXPECT_EQ(meter.mediaClass, QString());
}

TEST_F(PluginLevelTest, LevelsComeAgainWithANewSinkAndSessionManager) {
    recorder_.reset(); // does not survive it
    std::optional<Tone> tone(std::in_place, Tone::Player::pwCat, toneFrequency, tonePeak);
    EXPECT_TRUE(levelIs(awaitProgram(player), tonePeak));

    // This session manager serves neither sinks nor streams that another one has set up.
    session->stop(PrivateAudioSession::sessionManager);
    makeSinkAnew();
    session->start(PrivateAudioSession::sessionManager);
    tone.emplace(Tone::Player::pwCat, toneFrequency, tonePeak);
    EXPECT_TRUE(isHeard(tone->pid(), tonePeak)) << plugin_->output();
    restartServer();
}

TEST_F(PluginLevelTest, AfterSleepMetersAreMadeAnewAndTheApplicationNoticesNothing) {
    plugin_.reset();
    PluginHost plugin(loop_);
    const Tone tone(Tone::Player::pwCat, toneFrequency, tonePeak);
    const auto program = awaitProgram(player);
    EXPECT_TRUE(levelIs(program, tonePeak));
    const auto isTone = [](const auto& each) { return isNear(each.level, tonePeak); };
    const auto rebuilds = [&] {
        const auto before = metersInServer();
        EXPECT_FALSE(before.empty());
        application_->forgetLevels();
        plugin.levels().rebuild();
        EXPECT_TRUE(waitUntil([&] {
            const auto now = metersInServer();
            return !now.empty() && now != before;
        }));
        EXPECT_TRUE(waitUntil([&] { return levelsOf(program).size() >= 50; }));
        return std::all_of(levelsOf(program).begin(), levelsOf(program).end(), isTone);
    };
    bool isNoticed = true;
    // On a busy machine the tone itself breaks off.
    for (int take = 0; take < 10 && isNoticed; ++take)
        isNoticed = !rebuilds();
    EXPECT_FALSE(isNoticed);
}

TEST_F(PluginLevelTest, ManyProgramsPlayAtOnce) {
    // More than one filter has inputs for. PulseAudio's service takes 64 clients at most, and
    // sixteen descriptors for each.
    constexpr std::size_t programs = 40;
    recorder_.reset(); // the machine has enough to do
    std::vector<std::unique_ptr<support::NamedCopy>> copies;
    std::vector<std::unique_ptr<ChildProcess>> players;
    while (players.size() < programs) {
        copies.push_back(std::make_unique<support::NamedCopy>(
            "/usr/bin/pacat", "player-" + std::to_string(players.size())));
        players.push_back(std::make_unique<ChildProcess>(std::vector<std::string>{
            copies.back()->path(), "--playback", "--raw", "/dev/urandom"}));
    }
    for (const auto& each : players)
        EXPECT_TRUE(isHeard(each->pid(), 1))
            << each->pid() << "\n"
            << plugin_->output() << runPlugin({"--status"}).output << each->output();
    players.clear();
    EXPECT_TRUE(waitUntil(hasNoMeters));
}
