#include "e2e/PluginFixture.h"

#include "support/PrivateFolder.h"

#include <csignal>
#include <filesystem>

using support::ChildProcess;
using support::PrivateAudioSession;
using support::Tone;
using support::waitUntil;

namespace {

const QString player = "pw-cat";
const QString pulsePlayer = "paplay";

class PluginRestartTest : public PluginFixture {
  protected:
    std::size_t openDescriptors() const {
        const auto folder = "/proc/" + std::to_string(plugin_->pid()) + "/fd";
        const std::filesystem::directory_iterator files(folder);
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }

    /// Waits until the application gets levels of the program from now on.
    bool isMeasured(std::uint32_t pid) {
        application_->forgetLevels();
        return waitUntil([&] {
            const auto& levels = application_->levelsOf(pid);
            return std::ranges::count_if(levels,
                                         [](const auto& each) { return each.level > 0.4F; }) >= 5;
        });
    }

    /// Waits until the only program of that name, which plays the tone, is heard as the
    /// application asks.
    void expectControlled(const QString& name, const Tone& tone) {
        const auto program = awaitProgram(name);
        EXPECT_EQ(program.pid, static_cast<std::uint32_t>(tone.pid()));
        application_->setVolume(program.pid, 50);
        EXPECT_TRUE(hears(tonePeak * gainOf(50)));
    }

    /// A new session manager, which remembers 90 % of all programs' streams.
    void replaceSessionManager() {
        session->stop(PrivateAudioSession::sessionManager, SIGKILL);
        manager_.emplace(
            std::vector<std::string>{SETTINGS_PUBLISHER, "default", std::to_string(gainOf(90))});
        ASSERT_TRUE(waitUntil([&] { return manager_->output() == "ready\n"; }));
    }

    std::optional<ChildProcess> manager_;
};

} // namespace

TEST_F(PluginRestartTest, ItMayBeThereBeforeTheSoundServer) {
    plugin_.reset();
    stopServer();
    startPlugin();
    ASSERT_TRUE(tells("sound server: not connected"));
    restartServer();
    const Tone tone(Tone::Player::paplay, toneFrequency, tonePeak);
    expectControlled(pulsePlayer, tone);
}

TEST_F(PluginRestartTest, ItGoesOnWithANewSessionManager) {
    const Tone before(Tone::Player::pwCat, toneFrequency, tonePeak);
    application_->setVolume(awaitProgram(player).pid, 50);
    ASSERT_TRUE(hears(tonePeak * gainOf(50)));
    session->stop(PrivateAudioSession::sessionManager, SIGKILL);
    session->start(PrivateAudioSession::sessionManager);
    // This version does not link again what has been linked before, so nothing is heard.
    application_->setVolume(awaitProgram(player).pid, 60);
    EXPECT_TRUE(tells("wanted 60 %, has 60 %"));
    const Tone after(Tone::Player::paplay, toneFrequency, tonePeak);
    application_->setVolume(awaitProgram(pulsePlayer).pid, 70);
    EXPECT_TRUE(tells("wanted 70 %, has 70 %"));
    restartServer();
}

TEST_F(PluginRestartTest, ProgramsComeBackWithThePulseAudioService) {
    {
        const Tone tone(Tone::Player::paplay, toneFrequency, tonePeak);
        awaitProgram(pulsePlayer);
        recorder_.reset();
        session->stop(PrivateAudioSession::pulseService, SIGKILL);
    }
    session->start(PrivateAudioSession::pulseService);
    recorder_.emplace();
    const Tone tone(Tone::Player::paplay, toneFrequency, tonePeak);
    expectControlled(pulsePlayer, tone);
}

TEST_F(PluginRestartTest, StreamsThatLastForAMomentLeaveNothingBehind) {
    const Tone tone(Tone::Player::pwCat, toneFrequency, tonePeak);
    const auto program = awaitProgram(player);
    ASSERT_TRUE(isMeasured(program.pid));
    ASSERT_TRUE(hasIdleConnections());
    const std::size_t before = openDescriptors();
    const support::PrivateFolder folder;
    const std::string file = support::writeTone(folder.path() / "moment.wav", 300, 1, 0.02);
    for (int i = 0; i < 10; ++i) {
        std::vector<std::unique_ptr<ChildProcess>> moments;
        for (const char* const each : {"pw-cat", "paplay", "pw-cat", "paplay", "pw-cat"}) {
            std::vector<std::string> arguments{each, file};
            if (arguments[0] == "pw-cat")
                arguments.insert(arguments.begin() + 1, "--playback");
            moments.push_back(std::make_unique<ChildProcess>(arguments));
        }
        moments.front()->stop(SIGKILL);
        moments.back()->stop(SIGKILL);
        for (const auto& moment : moments)
            EXPECT_TRUE(moment->wait());
    }
    EXPECT_TRUE(waitUntil([&] { return application_->programs().size() == 1; }));
    EXPECT_TRUE(waitUntil([&] { return openDescriptors() == before; }))
        << openDescriptors() << " instead of " << before;
    EXPECT_TRUE(isMeasured(program.pid));
    expectControlled(player, tone);
}

TEST_F(PluginRestartTest, ItFindsItsWayBackToTheOthersAndThatCostsNoDescriptors) {
    std::size_t before = 0;
    for (int i = 0; i <= 5; ++i) {
        {
            const Tone tone(Tone::Player::pwCat, toneFrequency, tonePeak);
            awaitProgram(player);
            session->stop(PrivateAudioSession::server, SIGKILL);
            EXPECT_TRUE(tells("sound server: not connected"));
        }
        restartServer();
        const Tone tone(Tone::Player::pwCat, toneFrequency, tonePeak);
        expectControlled(player, tone);
        ASSERT_TRUE(isMeasured(static_cast<std::uint32_t>(tone.pid())));
        ASSERT_TRUE(hasIdleConnections());
        if (i == 0) // the first time may load what then stays
            before = openDescriptors();
        EXPECT_TRUE(waitUntil([&] { return openDescriptors() <= before; })) << i;
    }
    const Tone tone(Tone::Player::pwCat, toneFrequency, tonePeak);
    for (int i = 0; i < 20; ++i) {
        application_.reset();
        application_.emplace();
        awaitProgram(player);
    }
    ASSERT_TRUE(isMeasured(static_cast<std::uint32_t>(tone.pid())));
    EXPECT_TRUE(waitUntil([&] { return openDescriptors() <= before; }))
        << openDescriptors() << " instead of " << before;
}

TEST_F(PluginRestartTest, ANewSessionManagerDoesNotMixUpTheVolumes) {
    const Tone untouched("untouched", 1000, 0.01);
    awaitProcess(untouched.pid());
    const Tone quiet(Tone::Player::pwCat, toneFrequency, tonePeak);
    application_->setVolume(awaitProcess(quiet.pid()), 40);
    ASSERT_TRUE(hears(tonePeak * gainOf(40)));
    outlastHold();
    replaceSessionManager();
    ASSERT_TRUE(tells("nothing wanted, has 90 %")) << "it has set what it remembers";
    EXPECT_TRUE(tells("wanted 40 %, has 40 %"));
    restartServer();
}

TEST_F(PluginRestartTest, ANewSessionManagerChangesNothingOfWhatPlayedBeforeItCame) {
    plugin_.reset();
    const Tone first(Tone::Player::pwCat, toneFrequency, tonePeak);
    ASSERT_TRUE(hears(tonePeak));
    const auto setByPerson =
        support::runCommand({"wpctl", "set-volume", "-p", std::to_string(first.pid()), "30%"});
    ASSERT_EQ(setByPerson.status, 0) << setByPerson.output;
    ASSERT_TRUE(hears(tonePeak * gainOf(30)));
    const Tone second("second", 1000, 0.01);
    startPlugin();
    awaitProcess(first.pid());
    application_->setVolume(awaitProcess(second.pid()), 40);
    ASSERT_TRUE(tells(", has 40 %"));
    outlastHold();
    replaceSessionManager();
    EXPECT_TRUE(tells(", has 40 %"));
    EXPECT_TRUE(tells("wanted 30 % not muted, has 30 %"));
    restartServer();
}
