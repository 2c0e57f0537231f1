#include "e2e/PluginFixture.h"

#include "platform/bundle/Bundle.h"
#include "platform/loop/Timer.h"
#include "platform/sound/SampleOutput.h"
#include "support/ScopedVariable.h"
#include "support/SystemLogRecorder.h"
#include "ui/items/TNBeeper.h"

#include <fstream>
#include <iterator>
#include <numeric>

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

class SampleSoundTest : public PluginFixture {
  protected:
    /// The energy of all that is heard until it is silent again.
    double heard() {
        double energy = 0;
        const bool isOver = support::waitUntil([&] {
            const auto piece = recorder_->record(100ms).channels[0];
            const double now = std::inner_product(piece.begin(), piece.end(), piece.begin(), 0.0);
            energy += now;
            return energy > 0 && now == 0;
        });
        EXPECT_TRUE(isOver);
        return energy;
    }

    /// From the first to the last sample of what is heard from now on.
    double secondsHeard() {
        const std::vector<float> sound = recorder_->record(2s).channels[0];
        const auto first = std::ranges::find_if(sound, &isHeard);
        const auto last = std::find_if(sound.rbegin(), sound.rend(), &isHeard).base();
        return first == sound.end() ? 0
                                    : static_cast<double>(last - first) / support::Recording::rate;
    }

    /// The nodes of this process.
    static QList<QJsonObject> ownNodes() {
        QList<QJsonObject> nodes;
        for (const auto& object : jsonOf({"pw-dump"})) {
            const QJsonObject info = object[u"info"].toObject();
            if (info[u"props"][u"media.name"].toString() == "Sample sound")
                nodes += info;
        }
        return nodes;
    }

    support::SystemLogRecorder log_;
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
    double stopped = 0;
    // On a busy machine a sound begins so late that its end is not waited for.
    for (int take = 0; take < 20 && std::abs(stopped - whole) > 0.01; ++take) {
        const auto output = SampleOutput::load(recording()); // has to read and to connect first
        platform::Timer end(loop_, [&output] { output->stop(); });
        output->play(start, length, 1.0F);
        end.start(std::chrono::duration_cast<platform::MonotonicClock::duration>(length));
        stopped = secondsHeard();
        EXPECT_FALSE(end.isActive());
    }
    EXPECT_NEAR(stopped, whole, 0.01);
}

TEST_F(SampleSoundTest, ThePluginLeavesThemAlone) {
    const auto output = SampleOutput::load(recording());
    output->play(SampleOutput::Seconds(0), SampleOutput::Seconds(12), 0.2F);
    QList<QJsonObject> nodes;
    ASSERT_TRUE(support::waitUntil([&] { return !(nodes = ownNodes()).isEmpty(); }));
    const support::Tone other(support::Tone::Player::pwCat, 440, 0.1);
    awaitProcess(other.pid());
    EXPECT_EQ(application_->programs().size(), 1);
    ASSERT_EQ((nodes = ownNodes()).size(), 1);
    EXPECT_TRUE(nodes[0][u"props"][u"media.role"].isUndefined()) << "an ordinary stream";
    const QJsonValue volumes = nodes[0][u"params"][u"Props"][0];
    EXPECT_EQ(volumes[u"volume"].toDouble(), 1.0);
    EXPECT_EQ(volumes[u"channelVolumes"].toArray(), QJsonArray{1.0});
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
