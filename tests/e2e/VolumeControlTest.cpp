#include "platform/loop/RunLoop.h"
#include "platform/loop/RunLoopNotifier.h"
#include "support/PrivateAudioSession.h"
#include "support/SinkRecorder.h"
#include "support/Tone.h"
#include "support/VolumeModel.h"
#include "support/VolumeWindowProbe.h"
#include "support/WaitUntil.h"
#include "ui/VolumeWindow.h"
#include "ui/items/MVMuteImageView.h"

#include <QTest>

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <optional>

using support::RowProbe;
using support::Tone;
using support::waitUntil;

// The whole road on real sound: programs that play, the plug-in, the socket, the window, and what a
// recorder on the sink hears.
namespace {

constexpr unsigned lowTone = 440;
constexpr unsigned highTone = 1000;
constexpr double lowPeak = 0.5;
constexpr double highPeak = 0.25;
constexpr double half = 0.5 * 0.5 * 0.5; // what 50 percent is on the cubic scale

class VolumeControlTest : public testing::Test {
  protected:
    static void SetUpTestSuite() { session.emplace(); }
    static void TearDownTestSuite() { session.reset(); }

    void SetUp() override { startApplication(); }
    void TearDown() override { endApplication(); }

    void startApplication() {
        model_.emplace();
        window_.emplace(surroundings());
        levels.clear();
        EXPECT_TRUE(model_->serve(&recordAndShow));
        window_->show();
    }

    MVCollectionViewItem::Surroundings surroundings() {
        return {model_->controller,
                [this](const QString& name) { model_->ignoredApps.addCustomIgnore(name); },
                [] { return false; }, [](float) {}};
    }

    void endApplication() {
        model_->comm.shutdown();
        window_.reset();
        model_.reset();
    }

    static void recordAndShow(const MVCommActivityMessage* message) {
        levels[message->pid].push_back(message->level);
        AppVolumeController::sharedController()->handleActivity(message);
    }

    bool showsRow(const QString& name) const {
        return waitUntil([&] { return RowProbe(*window_, name).slider != nullptr; });
    }

    /// Waits until the program's level is within a tenth of `peak` in its messages and its row.
    bool showsLevel(const Tone& tone, const QString& name, double peak) const {
        const RowProbe row(*window_, name);
        const auto isNear = [peak](double value) { return std::abs(value - peak) <= 0.1 * peak; };
        return waitUntil([&] {
            const auto& reported = levels[static_cast<std::uint32_t>(tone.pid())];
            return !reported.empty() && isNear(reported.back()) && isNear(row.level() / 100.0);
        });
    }

    /// Waits until the recorder hears the tones at these peaks, to a twentieth.
    bool hears(double low, double high) {
        const auto isNear = [](double heard, double wanted) {
            return std::abs(heard - wanted) <= std::max(0.05 * wanted, 0.0005);
        };
        return waitUntil([&] {
            const support::Recording recording = recorder_->record(std::chrono::milliseconds(200));
            return isNear(recording.amplitude(lowTone), low) &&
                   isNear(recording.amplitude(highTone), high);
        });
    }

    static inline std::optional<support::PrivateAudioSession> session;
    static inline std::map<std::uint32_t, std::vector<float>> levels; // by pid

    platform::RunLoop loop_;
    platform::RunLoopNotifier notifier_{loop_};
    std::optional<support::VolumeModel> model_;
    std::optional<VolumeWindow> window_;
    support::ChildProcess plugin_{{TONVALE_PLUGIN}};
    std::optional<support::SinkRecorder> recorder_{std::in_place};
};

const QString lowName = QStringLiteral("pw-cat");
const QString highName = QStringLiteral("pacat");

} // namespace

TEST_F(VolumeControlTest, TheWindowSetsWhatIsHeardOfEachProgramAlone) {
    const Tone low(Tone::Player::pwCat, lowTone, lowPeak);
    const Tone high(Tone::Player::paplay, highTone, highPeak);
    ASSERT_TRUE(showsRow(lowName)) << plugin_.output();
    ASSERT_TRUE(showsRow(highName)) << plugin_.output();
    EXPECT_TRUE(showsLevel(low, lowName, lowPeak)) << plugin_.output();
    EXPECT_TRUE(showsLevel(high, highName, highPeak)) << plugin_.output();
    EXPECT_TRUE(hears(lowPeak, highPeak));

    const RowProbe row(*window_, lowName);
    row.slideTo(50);
    EXPECT_TRUE(hears(lowPeak * half, highPeak));
    EXPECT_TRUE(showsLevel(low, lowName, lowPeak)) << "a level is that before the volume";
    row.slideTo(0);
    EXPECT_TRUE(hears(0, highPeak));
    EXPECT_TRUE(waitUntil([&] { return row.level() == 1; })) << "it plays, though unheard";
    row.slideTo(100);
    EXPECT_TRUE(hears(lowPeak, highPeak));
    row.mute->setFocus();
    QTest::keyClick(row.mute, Qt::Key_Space);
    EXPECT_TRUE(hears(0, highPeak));
    RowProbe(*window_, highName).slideTo(50);
    EXPECT_TRUE(hears(0, highPeak * half));
    QTest::keyClick(row.mute, Qt::Key_Space);
    EXPECT_TRUE(hears(lowPeak, highPeak * half));
}

TEST_F(VolumeControlTest, AProgramsRowGoesWithTheProgram) {
    std::optional<Tone> tone;
    tone.emplace(Tone::Player::pwCat, lowTone, lowPeak);
    ASSERT_TRUE(showsRow(lowName)) << plugin_.output();
    ASSERT_TRUE(showsLevel(*tone, lowName, lowPeak)) << plugin_.output();
    tone.reset();
    EXPECT_TRUE(waitUntil([&] { return !support::rowNames(*window_).contains(lowName); }));
}

TEST_F(VolumeControlTest, ThePluginOutlivesTheAudioServer) {
    std::optional<Tone> tone(std::in_place, Tone::Player::pwCat, lowTone, lowPeak);
    ASSERT_TRUE(showsRow(lowName)) << plugin_.output();
    tone.reset();
    session->restart(support::PrivateAudioSession::server);
    recorder_.emplace();
    tone.emplace(Tone::Player::pwCat, lowTone, lowPeak);
    ASSERT_TRUE(showsRow(lowName)) << plugin_.output();
    EXPECT_TRUE(showsLevel(*tone, lowName, lowPeak)) << plugin_.output();
    RowProbe(*window_, lowName).slideTo(50);
    EXPECT_TRUE(hears(lowPeak * half, 0)) << plugin_.output();
}

TEST_F(VolumeControlTest, ThePluginComesBackToAnApplicationThatWasAway) {
    const Tone tone(Tone::Player::paplay, highTone, highPeak);
    ASSERT_TRUE(showsRow(highName)) << plugin_.output();
    endApplication();
    EXPECT_TRUE(hears(0, highPeak)) << "nothing changes for the program";
    startApplication();
    ASSERT_TRUE(showsRow(highName)) << plugin_.output();
    EXPECT_TRUE(showsLevel(tone, highName, highPeak)) << plugin_.output();
    RowProbe(*window_, highName).slideTo(0);
    EXPECT_TRUE(hears(0, 0));
}

TEST_F(VolumeControlTest, ThePluginEndsCleanlyAndLeavesTheSoundAsItIs) {
    const Tone tone(Tone::Player::pwCat, lowTone, lowPeak);
    ASSERT_TRUE(showsRow(lowName)) << plugin_.output();
    RowProbe(*window_, lowName).slideTo(50);
    EXPECT_TRUE(hears(lowPeak * half, 0));
    plugin_.signal(SIGTERM);
    EXPECT_EQ(plugin_.wait(), 0) << plugin_.output();
    EXPECT_TRUE(waitUntil([&] { return support::rowNames(*window_).isEmpty(); }));
    EXPECT_TRUE(hears(lowPeak * half, 0));
}
