#include "e2e/PluginFixture.h"

using support::Tone;
using support::waitUntil;

namespace {

class PluginProcessTest : public PluginFixture {};

const QString player = QStringLiteral("pw-cat");

} // namespace

TEST_F(PluginProcessTest, ItComesBackAfterTheApplicationWasKilledAndRestarted) {
    const Tone tone(Tone::Player::pwCat, toneFrequency, tonePeak);
    const auto first = awaitProgram(player);
    application_.reset();
    EXPECT_TRUE(hears(tonePeak)) << "the program is left alone";
    application_.emplace();
    const auto again = awaitProgram(player);
    EXPECT_EQ(again.pid, first.pid);
    application_->setVolume(again.pid, 50);
    EXPECT_TRUE(hears(tonePeak * gainOf(50)));
}
