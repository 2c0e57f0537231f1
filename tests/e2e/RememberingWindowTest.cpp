#include "comm/PluginBusClient.h"
#include "e2e/PreferencesFixture.h"
#include "model/VolumeConversion.h"
#include "platform/loop/MainQueue.h"
#include "support/VolumeModel.h"
#include "support/VolumeWindowProbe.h"
#include "ui/VolumeWindow.h"
#include "ui/items/MVMuteImageView.h"
#include "ui/items/MVVolumeSlider.h"

#include <QTest>

using support::RowProbe;
using support::Tone;

// The visible and audible result, with other mixers and with remembered volumes.
namespace {

const QString name = "stream_player";

class RememberingWindowTest : public PreferencesFixture {
  protected:
    void SetUp() override {
        PreferencesFixture::SetUp();
        startApplication();
        startPlugin();
    }

    void TearDown() override {
        endApplication();
        PreferencesFixture::TearDown();
    }

    void startApplication() {
        model_.emplace(own_);
        AppVolumeController& controller = model_->controller;
        window_.emplace(MVCollectionViewItem::Dependencies{
            controller,
            [this](const QString& ignored) { model_->ignoredApps.addCustomIgnore(ignored); },
            [] { return false; }, [](float) {}});
        reports_.emplace(
            PluginBusClient::Handlers{[&](std::uint32_t pid, const ProgramSetting& setting) {
                                          controller.changedElsewhere(pid, setting);
                                      },
                                      [](std::uint32_t, const QString&) {}, [] {}});
        EXPECT_TRUE(model_->serve());
        window_->show();
    }

    void endApplication() {
        model_->controller.shutdown();
        model_->comm.shutdown();
        reports_.reset();
        window_.reset();
        model_.reset();
    }

    /// A program's row, once it is there.
    RowProbe row(const QString& program = name) {
        EXPECT_TRUE(waitUntil([&] { return RowProbe(*window_, program).slider != nullptr; }))
            << plugin_->output();
        return RowProbe(*window_, program);
    }

    bool shows(int percent, bool muted) {
        const RowProbe shown = row();
        const auto percentShown = [&] {
            return VolumeConversion::percentOfFraction(
                static_cast<double>(shown.slider->floatValue()));
        };
        const bool isShown = waitUntil(
            [&] { return percentShown() == percent && shown.mute->app()->muted() == muted; });
        EXPECT_TRUE(isShown) << percentShown() << (shown.mute->app()->muted() ? " muted" : "");
        return isShown;
    }

    const platform::MainQueueService mainQueue_{loop_};
    std::optional<support::VolumeModel> model_;
    std::optional<VolumeWindow> window_;
    std::optional<PluginBusClient> reports_;
};

} // namespace

TEST_F(RememberingWindowTest, EachProgramPlaysAtTheVolumeOfItsRowAndNoOtherIsTouched) {
    constexpr unsigned otherFrequency = 1000;
    std::optional<Tone> tone(std::in_place, Tone::Player::pwCat, toneFrequency, tonePeak);
    const Tone other(Tone::Player::paplay, otherFrequency, 0.25);
    const QString toneName = "pw-cat";
    const RowProbe otherRow = row("paplay");
    const RowProbe toneRow = row(toneName);
    const auto hearsBoth = [&](double percent, double otherPercent) {
        return hears(tonePeak * gainOf(percent)) &&
               hears(0.25 * gainOf(otherPercent), otherFrequency);
    };
    const auto showsLevel = [](const RowProbe& shown, int percent) {
        return waitUntil([&] { return std::abs(shown.level() - percent) <= percent / 10; });
    };
    EXPECT_TRUE(showsLevel(toneRow, 50) && showsLevel(otherRow, 25));
    EXPECT_TRUE(hearsBoth(100, 100));
    toneRow.slideTo(50);
    EXPECT_TRUE(hearsBoth(50, 100));
    EXPECT_TRUE(showsLevel(toneRow, 50)) << "a level is that before the volume";
    toneRow.slideTo(0);
    EXPECT_TRUE(hearsBoth(0, 100));
    EXPECT_TRUE(showsLevel(toneRow, 1)) << "it plays, though unheard";
    toneRow.slideTo(100);
    toneRow.mute->setFocus();
    QTest::keyClick(toneRow.mute, Qt::Key_Space);
    otherRow.slideTo(50);
    EXPECT_TRUE(hearsBoth(0, 50));
    QTest::keyClick(toneRow.mute, Qt::Key_Space);
    EXPECT_TRUE(hearsBoth(100, 50));
    tone.reset();
    EXPECT_TRUE(waitUntil([&] { return !support::rowNames(*window_).contains(toneName); }));
}

TEST_F(RememberingWindowTest, AnotherMixersChangeMovesTheSliderAndIsRemembered) {
    std::optional<Player> player(std::in_place);
    player->play();
    row().slideTo(50);
    EXPECT_TRUE(hearsConstant(level * gainOf(50)));
    outlastRest();
    setElsewhereOnly(*player, 30);
    EXPECT_TRUE(shows(30, false));
    muteElsewhere(onlyStream(*player), true);
    EXPECT_TRUE(shows(30, true));
    muteElsewhere(onlyStream(*player), false);
    EXPECT_TRUE(shows(30, false));
    EXPECT_TRUE(hearsConstant(level * gainOf(30)));
    EXPECT_EQ(onlyStream(*player).percents, (std::vector{30, 30})) << "and no command came of it";

    row().slideTo(60);
    EXPECT_TRUE(hearsConstant(level * gainOf(60))) << "the newest wins again";
    outlastRest();
    setElsewhereOnly(*player, 120);
    EXPECT_TRUE(shows(100, false)) << "as far as it goes";
    EXPECT_TRUE(hearsConstant(level * gainOf(120))) << "and is left as it is";
    setElsewhereOnly(*player, 20);
    EXPECT_TRUE(shows(20, false));
    endApplication();
    startApplication();
    EXPECT_TRUE(shows(20, false));
    player.emplace();
    player->play();
    EXPECT_TRUE(hearsConstant(level * gainOf(20)));
    EXPECT_TRUE(shows(20, false));
}

TEST_F(RememberingWindowTest, IgnoringHidesAtOnceFreesAndIsTakenBack) {
    Player player;
    player.play();
    row().slideTo(40);
    QTest::mouseClick(row().mute, Qt::LeftButton);
    EXPECT_TRUE(hearsConstant(0));
    outlastRest();
    model_->ignoredApps.addCustomIgnore("Stream_Player");
    EXPECT_FALSE(support::rowNames(*window_).contains(name)) << "before anybody had to be asked";
    EXPECT_TRUE(hearsConstant(level));
    ASSERT_TRUE(tells("nothing wanted, remembered 40 % muted, ignored"));
    setElsewhereOnly(player, 70);
    EXPECT_TRUE(hearsConstant(level * gainOf(70)));
    Player next;
    next.play();
    EXPECT_TRUE(hearsConstant(level * (gainOf(70) + 1))) << "nothing of it is touched any more";
    next.process().stop();

    model_->ignoredApps.removeCustomIgnore("Stream_Player");
    EXPECT_TRUE(shows(40, true));
    EXPECT_TRUE(hearsConstant(0));
    QTest::mouseClick(row().mute, Qt::LeftButton);
    EXPECT_TRUE(hearsConstant(level * gainOf(40)));
}

TEST_F(RememberingWindowTest, WhatIsIgnoredWhileThePluginIsAwayIsFreedWhenThatComes) {
    Player player;
    player.play();
    model_->workspace.setRunningApplications({{player.pid(), name, {}}});
    row().slideTo(40);
    EXPECT_TRUE(hearsConstant(level * gainOf(40)));
    plugin_->stop();
    ASSERT_TRUE(waitUntil([&] { return MVCommCopyConnectedProcesses(model_->comm).isEmpty(); }));
    model_->ignoredApps.addCustomIgnore(name);
    ASSERT_TRUE(model_->defaults.synchronize()) << "the plug-in sees no change, only the list";
    startPlugin();
    ASSERT_TRUE(tells("nothing wanted, remembered 40 % not muted, ignored"));
    EXPECT_TRUE(hearsConstant(level));
    outlastRest();
    setElsewhereOnly(player, 70);
    EXPECT_TRUE(hearsConstant(level * gainOf(70))) << "once";
}

TEST_F(RememberingWindowTest, ProgramsOfOneNameShareChangesMadeInAnotherMixer) {
    Player first;
    first.play();
    row().slideTo(60);
    Player second;
    second.play();
    EXPECT_TRUE(hearsConstant(2 * level * gainOf(60)));
    outlastRest(); // also, the file says nothing about the first one for a second
    setElsewhereOnly(second, 30);
    EXPECT_TRUE(shows(30, false));
    EXPECT_TRUE(hearsConstant(2 * level * gainOf(30))) << "also the one whose slider it is";
}
