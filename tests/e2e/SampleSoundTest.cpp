#include "platform/desktop/SampleOutput.h"
#include "platform/files/Bundle.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/Timer.h"
#include "support/ListeningApplication.h"
#include "support/PrivateAudioSession.h"
#include "support/ScopedVariable.h"
#include "support/SinkRecorder.h"
#include "support/SystemLogRecorder.h"
#include "support/Tone.h"
#include "support/WaitUntil.h"
#include "ui/items/TNBeeper.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <optional>
#include <unistd.h>

using platform::SampleOutput;
using namespace std::chrono_literals;

// The sample sounds on a real sound server, played by the process that serves the application's
// socket, with the plug-in at work.
namespace {

constexpr SampleOutput::Seconds start{11.681}; // of one of the pieces
constexpr SampleOutput::Seconds length{0.781};

std::filesystem::path recording() {
    return platform::Bundle::main().resource("bounces.mp3", {".ogg"});
}

bool isLoaded(const char* library) {
    std::ifstream maps("/proc/self/maps");
    const std::string text(std::istreambuf_iterator<char>(maps), {});
    return text.find(library) != std::string::npos;
}

bool isHeard(float sample) {
    return std::fabs(sample) > 1e-4F;
}

double squares(const std::vector<float>& samples) {
    double sum = 0;
    for (const float sample : samples)
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    return sum;
}

class SampleSoundTest : public testing::Test {
  protected:
    static void SetUpTestSuite() { session.emplace(); }
    static void TearDownTestSuite() { session.reset(); }

    /// The energy of all that is heard until it is silent again.
    double heard() {
        double energy = 0;
        const bool isOver = support::waitUntil([&] {
            const support::Recording piece = recorder_.record(100ms);
            const double now = squares(piece.channels[0]);
            energy += now;
            return energy > 0 && now == 0;
        });
        EXPECT_TRUE(isOver);
        return energy;
    }

    /// From the first to the last sample of what is heard from now on.
    double secondsHeard() {
        const support::Recording all = recorder_.record(2s);
        const std::vector<float>& sound = all.channels[0];
        const auto first = std::ranges::find_if(sound, &isHeard);
        const auto last = std::find_if(sound.rbegin(), sound.rend(), &isHeard).base();
        return first == sound.end() ? 0
                                    : static_cast<double>(last - first) / support::Recording::rate;
    }

    /// The nodes of this process.
    static QList<QJsonObject> ownNodes() {
        const auto dump = support::runCommand({"pw-dump"});
        const auto objects =
            QJsonDocument::fromJson(QByteArray::fromStdString(dump.output)).array();
        QList<QJsonObject> nodes;
        for (const auto& object : objects) {
            const QJsonObject info = object[QLatin1String("info")].toObject();
            const QJsonObject props = info[QLatin1String("props")].toObject();
            if (props[QLatin1String("media.name")].toString() == QLatin1String("Sample sound"))
                nodes += info;
        }
        return nodes;
    }

    static inline std::optional<support::PrivateAudioSession> session;

    support::SystemLogRecorder log_;
    platform::RunLoop loop_;
    support::ListeningApplication application_;
    support::ChildProcess plugin_{{TONVALE_PLUGIN}};
    support::SinkRecorder recorder_;
};

} // namespace

TEST_F(SampleSoundTest, IsLoadedWithTheFirstOneAndHeardInItsCube) {
    ASSERT_FALSE(isLoaded("libpipewire"));
    ASSERT_FALSE(isLoaded("libsndfile"));
    TNBeeper& beeper = TNBeeper::sharedBeeper();
    EXPECT_FALSE(isLoaded("libpipewire"));
    beeper.beepAtVolume(1.0F);
    EXPECT_TRUE(isLoaded("libpipewire"));
    EXPECT_GT(heard(), 0);

    const auto output = SampleOutput::load(recording());
    ASSERT_NE(output, nullptr);
    output->play(start, length, 1.0F);
    const double loud = heard();
    output->play(start, length, 0.125F);
    EXPECT_NEAR(std::sqrt(heard() / loud), 0.125, 0.01);
    EXPECT_TRUE(support::waitUntil([] { return ownNodes().isEmpty(); })) << "nothing lingers";
}

TEST_F(SampleSoundTest, APieceThatIsStoppedAtItsEndIsHeardToItsEnd) {
    const auto one = SampleOutput::load(recording());
    one->play(start, length, 1.0F);
    const double whole = secondsHeard();
    EXPECT_NEAR(whole, length.count(), 0.05);
    const auto output = SampleOutput::load(recording()); // which has to read and to connect first
    platform::Timer end(loop_, [&output] { output->stop(); });
    output->play(start, length, 1.0F);
    end.start(std::chrono::duration_cast<platform::MonotonicClock::duration>(length));
    const double stopped = secondsHeard();
    EXPECT_FALSE(end.isActive());
    EXPECT_NEAR(stopped, whole, 0.01);
}

TEST_F(SampleSoundTest, ThePluginLeavesThemAlone) {
    const auto output = SampleOutput::load(recording());
    output->play(SampleOutput::Seconds(0), SampleOutput::Seconds(12), 0.2F);
    QList<QJsonObject> nodes;
    ASSERT_TRUE(support::waitUntil([&] { return !(nodes = ownNodes()).isEmpty(); }));
    const support::Tone other(support::Tone::Player::pwCat, 440, 0.1);
    ASSERT_TRUE(support::waitUntil([&] { return application_.program("pw-cat").has_value(); }));
    const auto programs = application_.programs();
    EXPECT_TRUE(std::ranges::none_of(programs, [](const auto& program) {
        return program.pid == static_cast<std::uint32_t>(::getpid());
    }));
    ASSERT_EQ((nodes = ownNodes()).size(), 1);
    const QJsonObject props = nodes[0][QLatin1String("props")].toObject();
    EXPECT_FALSE(props.contains(QLatin1String("media.role"))) << "an ordinary stream";
    const QJsonObject volumes =
        nodes[0][QLatin1String("params")][QLatin1String("Props")][0].toObject();
    EXPECT_EQ(volumes[QLatin1String("volume")].toDouble(), 1.0);
    EXPECT_EQ(volumes[QLatin1String("channelVolumes")].toArray(), QJsonArray{1.0});
    output->stop();
    EXPECT_TRUE(support::waitUntil([] { return ownNodes().isEmpty(); }));
}

TEST_F(SampleSoundTest, WithoutARecordingOrAServerThereIsSilenceAndNoWaiting) {
    const auto missing = SampleOutput::load("/nowhere/bounces.ogg");
    missing->play(start, length, 1.0F);
    EXPECT_TRUE(support::waitUntil([&] { return log_.contains("Couldn't read the recording"); }));
    const support::PrivateFolder empty;
    const support::ScopedVariable runtime("XDG_RUNTIME_DIR", empty.path());
    const auto alone = SampleOutput::load(recording());
    alone->play(start, length, 1.0F);
    EXPECT_TRUE(support::waitUntil([&] { return log_.contains("Couldn't play a sample sound"); }));
    EXPECT_TRUE(ownNodes().isEmpty());
}
