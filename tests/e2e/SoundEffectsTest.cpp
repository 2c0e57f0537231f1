#include "e2e/PluginFixture.h"

#include <filesystem>

using support::PrivateAudioSession;
using support::Tone;
using support::waitUntil;

namespace {

const QString effects = "coreaudiod";
const QString music = "paplay";
constexpr const char* setting = "restore.stream.Output/Audio.media.role:Notification";
constexpr unsigned musicFrequency = 1000;

/// What a program does to sound a notification.
struct Sounding {
    Tone::Player player;
    const char* role;
};
constexpr Sounding throughPulse{Tone::Player::paplay, "event"};
constexpr Sounding native{Tone::Player::pwCat, "Notification"};
// The session manager keeps its volume elsewhere.
constexpr Sounding unknownToManager{Tone::Player::pwCat, "Event"};

/// Notification sounds beside the sounds of programs, under a session manager that remembers.
class SoundEffectsTest : public PluginFixture {
  protected:
    static void SetUpTestSuite() { session.emplace(PrivateAudioSession::Memory::kept); }

    /// Whatever an earlier test left, what this one asks for is something else.
    void SetUp() override { moveSlider(valueOf("0.9")); }

    /// What the session manager will give to the next notification, as text.
    static std::string remembered() {
        const auto answer =
            support::runCommand({"pw-metadata", "-n", "route-settings", "0", setting});
        const std::string begin = "value:'";
        const std::size_t at = answer.output.find(begin);
        const std::size_t end = answer.output.find("' type:", at);
        return at == std::string::npos || end == std::string::npos
                   ? ""
                   : answer.output.substr(at + begin.size(), end - at - begin.size());
    }
    static bool remembers(const std::string& text) {
        return waitUntil([&] { return remembered().find(text) != std::string::npos; });
    }

    /// The desktop's slider for notification sounds.
    static void moveSlider(const std::string& value) {
        support::runCommand(
            {"pw-metadata", "-n", "route-settings", "0", setting, value, "Spa:String:JSON"});
        ASSERT_TRUE(remembers(value));
    }
    static std::string valueOf(const std::string& volume, bool mute = false) {
        return std::string(R"({"mute":)") + (mute ? "true" : "false") + R"(,"volumes":[)" + volume +
               "," + volume + R"(],"channels":["FL","FR"]})";
    }

    std::uint32_t awaitEffects() { return awaitProgram(effects).pid; }

    /// Asks for a volume and waits until the session manager has it. Something else comes first:
    /// the plug-in may not have seen yet that a slider has just moved away from this volume.
    void setVolume(int percent, const std::string& gain) {
        const std::uint32_t pid = application_->program(effects).value().pid;
        application_->setVolume(pid, 10);
        application_->setVolume(pid, percent);
        EXPECT_TRUE(remembers("[" + gain + "," + gain + "]")) << remembered();
    }

    /// Sounds a notification and checks the whole of it, the first samples above all.
    void expectNext(const Sounding& sounding, double peak) {
        EXPECT_TRUE(waitUntil([&] {
            return recorder_->record(std::chrono::milliseconds(100)).peak() == 0;
        })) << "what was before still sounds";
        const Tone event(sounding.player, toneFrequency, tonePeak, {}, sounding.role);
        const auto samples = recorder_->record(std::chrono::milliseconds(1200)).channels[0];
        const auto loudest = [](auto begin, auto end) {
            const auto [least, most] = std::minmax_element(begin, end);
            return begin == end
                       ? 0.0
                       : std::max(static_cast<double>(*most), -static_cast<double>(*least));
        };
        EXPECT_NEAR(loudest(samples.begin(), samples.end()), peak, 0.05 * peak + 0.0002)
            << plugin_->output();
        const auto onset = std::find_if(samples.begin(), samples.end(),
                                        [](float sample) { return std::abs(sample) > 1e-4F; });
        constexpr std::ptrdiff_t period = 48000 / toneFrequency + 1;
        if (peak <= 0)
            return;
        ASSERT_GT(samples.end() - onset, 2 * period) << "the notification was not heard";
        EXPECT_NEAR(loudest(onset, onset + 2 * period), peak, 0.05 * peak);
    }
};

} // namespace

TEST_F(SoundEffectsTest, TheirLevelIsThatOfTheLoudestAndNoProgramsOwn) {
    const std::uint32_t pid = awaitEffects();
    {
        const Tone quiet(throughPulse.player, toneFrequency, 0.25, {}, throughPulse.role);
        EXPECT_TRUE(reportsLevel(pid, 0.25)) << plugin_->output();
        const Tone loud(native.player, musicFrequency, tonePeak, {}, native.role);
        EXPECT_TRUE(reportsLevel(pid, tonePeak)) << plugin_->output();
        EXPECT_TRUE(application_->programs().isEmpty());
    }
    EXPECT_TRUE(waitUntil([&] { return application_->levelsOf(pid).back().level == 0.0F; }));
}

TEST_F(SoundEffectsTest, NothingIsWrittenUnasked) {
    const std::string value = R"({ "volumes": [ 0.5 ], "channels": [ "MONO" ] })";
    moveSlider(value);
    plugin_.reset();
    startPlugin();
    awaitEffects();
    expectNext(throughPulse, 0.5 * tonePeak);
    EXPECT_EQ(remembered(), value);
}

TEST_F(SoundEffectsTest, TheVolumeHoldsForTheNextOneFromItsFirstSample) {
    awaitEffects();
    for (const auto& [percent, gain] :
         {std::pair{50, "0.125"}, {100, "1.0"}, {25, "0.015625"}, {75, "0.421875"}}) {
        for (const Sounding& sounding : {throughPulse, native, unknownToManager}) {
            SCOPED_TRACE(std::string(sounding.role) + " at " + std::to_string(percent));
            moveSlider(valueOf("0.9"));
            setVolume(percent, gain);
            expectNext(sounding, tonePeak * gainOf(percent));
        }
    }
}

TEST_F(SoundEffectsTest, MutedOnesAreNotHeardAndComeBackAtTheirVolume) {
    const std::uint32_t pid = awaitEffects();
    setVolume(50, "0.125");
    application_->setMute(pid, true);
    EXPECT_TRUE(remembers(R"("mute":true)"));
    expectNext(throughPulse, 0);
    expectNext(unknownToManager, 0);
    application_->setMute(pid, false);
    EXPECT_TRUE(remembers(R"("mute":false)"));
    expectNext(throughPulse, tonePeak * gainOf(50));
}

TEST_F(SoundEffectsTest, CommandsForThemAndForTheirProgramAreApart) {
    moveSlider(valueOf("1.0"));
    const std::uint32_t pid = awaitEffects();
    const Tone player(Tone::Player::paplay, musicFrequency, 0.25);
    const auto program = awaitProgram(music);
    // One process with two streams, as far as anybody but the kernel can tell.
    const support::PrivateFolder folder;
    const support::ChildProcess event(
        {"paplay", "--property=media.role=event",
         "--property=application.process.id=" + std::to_string(player.pid()),
         support::writeTone(folder.path() / "event.wav", toneFrequency, tonePeak)});
    const auto hearsBoth = [this](double effect, double other) {
        return waitUntil([&] {
            const auto heard = recorder_->record(std::chrono::milliseconds(200));
            return std::abs(heard.amplitude(toneFrequency) - effect) <= 0.05 * effect + 0.0005 &&
                   std::abs(heard.amplitude(musicFrequency) - other) <= 0.05 * other + 0.0005;
        });
    };
    EXPECT_TRUE(hearsBoth(0.5, 0.25));
    EXPECT_EQ(application_->programs().size(), 1);
    application_->setVolume(pid, 50);
    EXPECT_TRUE(hearsBoth(0.5 * gainOf(50), 0.25));
    application_->setMute(program.pid, true);
    EXPECT_TRUE(hearsBoth(0.5 * gainOf(50), 0));
    application_->setMute(pid, true);
    application_->setMute(program.pid, false);
    EXPECT_TRUE(hearsBoth(0, 0.25));
}

TEST_F(SoundEffectsTest, TheDesktopsSliderIsTakenOver) {
    application_->setMute(awaitEffects(), false);
    setVolume(50, "0.125");
    const std::string slider = R"({ "mute": false, "volumes": [ 0.5, 0.5 ] })";
    moveSlider(slider);
    for (const Sounding& sounding : {unknownToManager, throughPulse, native})
        expectNext(sounding, 0.5 * tonePeak);
    EXPECT_EQ(remembered(), slider) << "nobody writes it back";
}

TEST_F(SoundEffectsTest, ASessionManagerThatForgotTheVolumeGetsItAgain) {
    // A new session manager can take over no sink that has ever run.
    const std::uint32_t before = awaitEffects();
    recorder_.reset();
    session->restart(session->server);
    ASSERT_TRUE(waitUntil([&] {
        const auto program = application_->program(effects);
        return program && program->pid != before;
    }));
    moveSlider(valueOf("0.9"));
    setVolume(50, "0.125");
    session->stop(session->sessionManager, SIGKILL);
    session->start(session->sessionManager);
    EXPECT_TRUE(remembers("[0.125,0.125]")) << remembered();
    recorder_.emplace();
    expectNext(throughPulse, tonePeak * gainOf(50));
}

TEST_F(SoundEffectsTest, SettingsOfTheSameNameReplaceThoseThatAreThereOnlyWhenTheseGo) {
    const std::uint32_t pid = awaitEffects();
    support::ChildProcess others({SETTINGS_PUBLISHER, "route-settings"});
    ASSERT_TRUE(waitUntil([&] { return others.output() == "ready\n"; })) << others.output();
    application_->setVolume(pid, 40);
    expectNext(throughPulse, tonePeak * gainOf(40));
    EXPECT_EQ(others.output(), "ready\n") << "nothing is written there";

    recorder_.reset();
    session->stop(PrivateAudioSession::sessionManager);
    EXPECT_TRUE(waitUntil([&] { return others.output().find("0.064") != std::string::npos; }))
        << others.output();
    others.stop();
    restartServer();
}

TEST_F(SoundEffectsTest, TheyGoWithTheServerAndComeBackWithTheNextOne) {
    const std::uint32_t pid = awaitEffects();
    setVolume(50, "0.125");
    stopServer();
    EXPECT_TRUE(waitUntil([&] { return !application_->program(effects); }));
    restartServer();
    const auto again = awaitProgram(effects);
    EXPECT_NE(again.pid, pid);
    EXPECT_EQ(again.pid, static_cast<std::uint32_t>(session->processOf(session->server)));
    EXPECT_EQ(again.path.toStdString(), std::filesystem::canonical("/usr/bin/pipewire"));
    EXPECT_TRUE(remembers("[0.125,0.125]")) << remembered();
    expectNext(throughPulse, tonePeak * gainOf(50));
    expectNext(unknownToManager, tonePeak * gainOf(50));
}
