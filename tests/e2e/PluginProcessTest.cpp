#include "e2e/PluginFixture.h"
#include "e2e/SilentApplication.h"

#include "platform/bus/DistributedNotification.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <sys/socket.h>
#include <unistd.h>

using platform::FileDescriptor;
using support::ChildProcess;
using support::Tone;
using support::waitUntil;
using testing::AllOf;
using testing::HasSubstr;

namespace {

using PluginProcessTest = PluginFixture;

const QString player = "pw-cat";

bool says(const ChildProcess& program, const std::string& text, std::size_t from = 0) {
    return waitUntil([&] { return program.outputFrom(from).find(text) != std::string::npos; });
}

/// Processor time that the process has used, in clock ticks.
long processorTime(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string field;
    long ticks = 0;
    for (int i = 1; i <= 15 && file >> field; ++i) {
        if (i >= 14)
            ticks += std::stol(field);
    }
    return ticks;
}

} // namespace

TEST_F(PluginProcessTest, ItComesBackAfterTheApplicationWasKilledAndRestarted) {
    application_.reset();
    const Tone tone(Tone::Player::pwCat, toneFrequency, tonePeak);
    const std::string checkin = "pw-cat " + std::to_string(tone.pid());
    for (int i = 0; i < 2; ++i) {
        ChildProcess application({LISTENING_PROGRAM});
        EXPECT_TRUE(says(application, checkin));
        EXPECT_EQ(application.stop(SIGKILL), 128 + SIGKILL);
        EXPECT_TRUE(hears(tonePeak)) << "the program is left alone";
    }
    application_.emplace();
    const auto again = awaitProgram(player);
    EXPECT_EQ(again.pid, static_cast<std::uint32_t>(tone.pid()));
    application_->setVolume(again.pid, 50);
    EXPECT_TRUE(hears(tonePeak * gainOf(50)));
}

TEST_F(PluginProcessTest, AnApplicationThatIsStoppedHoldsNothingUp) {
    application_.reset();
    ChildProcess application({LISTENING_PROGRAM});
    const Tone first(Tone::Player::pwCat, toneFrequency, tonePeak);
    ASSERT_TRUE(says(application, "pw-cat " + std::to_string(first.pid())));
    application.signal(SIGSTOP);
    const Tone second(Tone::Player::paplay, 1000, 0.2);
    EXPECT_TRUE(tells("paplay (pid " + std::to_string(second.pid())));
    EXPECT_TRUE(hears(tonePeak) && hears(0.2, 1000));

    application.signal(SIGCONT);
    EXPECT_TRUE(says(application, "paplay " + std::to_string(second.pid())));
    EXPECT_TRUE(says(application, "pw-cat", application.outputSize())) << "levels come again";
    application.stop(SIGKILL);
    application_.emplace();
    awaitProgram(player);
    awaitProgram("paplay");
}

TEST_F(PluginProcessTest, AnotherUsersSocketIsIgnoredAndALaunchEndsTheLongestPauseAtOnce) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can serve a socket as another user";
    application_.reset();
    const Tone tone(Tone::Player::pwCat, toneFrequency, tonePeak);
    {
        const SilentApplication stranger(SilentApplication::Owner::nobody);
        // The next pause is 4 s at least.
        for (int attempts = 0; attempts < 5; ++attempts) {
            const FileDescriptor connection = stranger.accept();
            std::byte byte{};
            ssize_t size = -1;
            EXPECT_TRUE(waitUntil(
                [&] { return (size = ::recv(connection.get(), &byte, sizeof byte, 0)) >= 0; }));
            EXPECT_EQ(size, 0) << "it says nothing to strangers";
        }
    }
    const SilentApplication application;
    EXPECT_TRUE(platform::postDistributedNotification("com.quarnel.mivo.guiDidLaunch"));
    EXPECT_TRUE(application.acceptProgram(tone.pid(), std::chrono::seconds(2)));
    const std::string output = plugin_->output();
    EXPECT_EQ(timesIn(output, "which another user serves"), 1U) << output;
}

TEST_F(PluginProcessTest, ASecondOneEndsAtOnceAndTheFirstIsAsked) {
    const Tone tone(Tone::Player::pwCat, toneFrequency, tonePeak);
    application_->setVolume(awaitProgram(player).pid, 50);
    ASSERT_TRUE(tells("has 50 % not muted"));
    const auto second = runPlugin({});
    EXPECT_EQ(second.status, 3);
    EXPECT_EQ(second.output, "TonvalePlugin: The plug-in runs in this session already\n");
    EXPECT_THAT(
        runPlugin({"--status"}).output,
        AllOf(HasSubstr("sound server: connected\napplication: connected\n"),
              HasSubstr(
                  "pw-cat (pid " + std::to_string(tone.pid()) +
                  ", /usr/bin/pw-cat, confirmed by the kernel): wanted 50 %, remembered 50 %\n"),
              HasSubstr(" plays: wanted 50 %, has 50 % not muted\n")));
}

TEST_F(PluginProcessTest, OptionsAreAnsweredAndWrongOnesRefused) {
    for (const char* const asking : {"--help", "-h"})
        EXPECT_THAT(runPlugin({asking}).output, HasSubstr("--status"));
    EXPECT_EQ(runPlugin({"--version"}).output, "Tonvale plug-in " TONVALE_VERSION "\n");
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"--wrong"}, {""}, {"--status", "--help"}}) {
        const auto result = runPlugin(options);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(std::ranges::count(result.output, '\n'), 1) << result.output;
    }
    plugin_.reset();
    EXPECT_EQ(runPlugin({"--status"}).status, 1);
}

TEST_F(PluginProcessTest, ItsEndDoesNotAffectTheSoundAndTheNextOneGoesOn) {
    const Tone tone(Tone::Player::pwCat, toneFrequency, tonePeak);
    int percent = 80;
    for (const auto& [signal, status] :
         {std::pair{SIGTERM, 0}, {SIGINT, 0}, {SIGKILL, 128 + SIGKILL}}) {
        application_->setVolume(awaitProgram(player).pid, percent -= 10);
        ASSERT_TRUE(hears(tonePeak * gainOf(percent)));
        EXPECT_EQ(plugin_->stop(signal), status) << plugin_->output();
        ASSERT_TRUE(waitUntil([&] { return application_->programs().isEmpty(); }));
        startPlugin();
        awaitProgram(player);
        EXPECT_TRUE(hears(tonePeak * gainOf(percent)));
    }
}

TEST_F(PluginProcessTest, ItRunsWithoutASessionBusAndWithoutARuntimeFolder) {
    plugin_.reset();
    const Tone tone(Tone::Player::pwCat, toneFrequency, tonePeak);
    ChildProcess::Options options;
    options.environment = {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere"},
                           {"XDG_RUNTIME_DIR", ""},
                           {"PIPEWIRE_RUNTIME_DIR", session->runtimeFolder()}};
    plugin_.emplace(std::vector<std::string>{TONVALE_PLUGIN}, options);
    application_->setVolume(awaitProgram(player).pid, 50);
    EXPECT_TRUE(hears(tonePeak * gainOf(50)));
    EXPECT_EQ(plugin_->stop(SIGTERM), 0) << plugin_->output();
}

TEST_F(PluginProcessTest, ASystemBusThatDoesNotAnswerHoldsNothingUp) {
    plugin_.reset();
    const Tone tone(Tone::Player::pwCat, toneFrequency, tonePeak);
    const support::PrivateFolder folder;
    const std::string path = folder.path() / "bus";
    const FileDescriptor silent = platform::makeUnixSocket();
    ASSERT_TRUE(platform::bindUnixSocket(silent.get(), path));
    ASSERT_EQ(::listen(silent.get(), 1), 0);
    const support::ScopedVariable variable("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + path);
    startPlugin();
    awaitProgram(player);
    EXPECT_THAT(plugin_->output(), HasSubstr("The system bus doesn't answer"));
}

TEST_F(PluginProcessTest, LostBusesNeitherEndItNorKeepItBusy) {
    plugin_.reset();
    const Tone tone(Tone::Player::pwCat, toneFrequency, tonePeak);
    {
        const support::PrivateBus system;
        const support::ScopedVariable variable("DBUS_SYSTEM_BUS_ADDRESS", system.address());
        const support::PrivateBus bus;
        startPlugin();
        ASSERT_TRUE(tells("sound server: connected"));
    }
    EXPECT_TRUE(says(*plugin_, "The system bus was lost"));
    application_->setVolume(awaitProgram(player).pid, 50);
    EXPECT_TRUE(hears(tonePeak * gainOf(50)));
    ASSERT_TRUE(plugin_->isRunning()) << plugin_->output();
    const long before = processorTime(plugin_->pid());
    recorder_->record(std::chrono::seconds(3));
    EXPECT_LE(processorTime(plugin_->pid()) - before, ::sysconf(_SC_CLK_TCK) / 2);
}
