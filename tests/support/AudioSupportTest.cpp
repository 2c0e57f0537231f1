#include "support/PrivateAudioSession.h"
#include "support/SinkRecorder.h"
#include "support/Tone.h"
#include "support/WaitUntil.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace support {
namespace {

using namespace std::chrono_literals;

/// Whether a recording soon has the amplitude, within 3 %.
bool soonHears(SinkRecorder& recorder, double frequency, double amplitude) {
    return waitUntil([&] {
        const double heard = recorder.record(200ms).amplitude(frequency);
        return std::abs(heard - amplitude) <= 0.03 * amplitude;
    });
}

class ToneOnPrivateSession : public testing::TestWithParam<Tone::Player> {};

TEST_P(ToneOnPrivateSession, IsRecordedWithItsAmplitudeUntilItEnds) {
    const PrivateAudioSession session;
    SinkRecorder recorder;
    EXPECT_EQ(recorder.record(50ms).peak(), 0);
    {
        Tone tone(GetParam(), 440, 0.5);
        EXPECT_TRUE(soonHears(recorder, 440, 0.5)) << tone.process().output();
        const Recording recording = recorder.record(200ms);
        EXPECT_NEAR(recording.amplitude(440, 1), 0.5, 0.015);
        EXPECT_LT(recording.amplitude(1000), 0.01);
    }
    EXPECT_TRUE(waitUntil([&] { return recorder.record(50ms).peak() == 0; }));
}

INSTANTIATE_TEST_SUITE_P(Players, ToneOnPrivateSession,
                         testing::Values(Tone::Player::pwCat, Tone::Player::paplay));

TEST(PrivateAudioSession, PlaysTwoProgramsAtOnceAfterEveryServiceWasRestarted) {
    PrivateAudioSession session;
    for (const char* service : {PrivateAudioSession::pulseService,
                                PrivateAudioSession::sessionManager, PrivateAudioSession::server}) {
        const pid_t before = session.processOf(service);
        session.restart(service);
        EXPECT_NE(session.processOf(service), before);
    }
    SinkRecorder recorder;
    Tone first(Tone::Player::pwCat, 440, 0.4);
    Tone second(Tone::Player::paplay, 1000, 0.25);
    EXPECT_NE(Tone::executable(Tone::Player::pwCat), Tone::executable(Tone::Player::paplay));
    EXPECT_TRUE(soonHears(recorder, 440, 0.4));
    EXPECT_TRUE(soonHears(recorder, 1000, 0.25));
}

TEST(PrivateAudioSession, LeavesTheEnvironmentAndNoProcessBehind) {
    const auto runtimeFolder = [] {
        const char* const folder = std::getenv("XDG_RUNTIME_DIR");
        return std::string(folder ? folder : "");
    };
    const std::string before = runtimeFolder();
    {
        PrivateAudioSession session;
        EXPECT_EQ(runtimeFolder(), session.runtimeFolder());
        session.stop(PrivateAudioSession::server, SIGKILL);
        EXPECT_EQ(session.processOf(PrivateAudioSession::server), 0);
        EXPECT_TRUE(waitUntil([&] {
            return session.processOf(PrivateAudioSession::sessionManager) == 0;
        })) << "the session manager outlives its server";
    }
    EXPECT_EQ(runtimeFolder(), before);
    EXPECT_EQ(runCommand({"ps", "-o", "comm=", "--ppid", std::to_string(::getpid())}).output,
              "ps\n");
}

} // namespace
} // namespace support
