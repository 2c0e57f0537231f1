#include "ui/AppVolumeController.h"

#include "RecordingView.h"
#include "comm/MVCommAppValue.h"
#include "comm/MVCommSocketPath.h"
#include "platform/MainQueue.h"
#include "platform/PropertyList.h"
#include "platform/RunLoop.h"
#include "support/PrivateFolder.h"
#include "support/ScriptedPlugin.h"
#include "support/SystemLogRecorder.h"
#include "support/VolumeModel.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QSignalSpy>

#include <future>

using support::ScriptedPlugin;
using support::waitUntil;

namespace {

class AppVolumeControllerTest : public testing::Test {
  protected:
    AppVolumeControllerTest() {
        EXPECT_TRUE(model_.serve());
        controller_.setView(&view_);
        view_.told.clear();
    }
    ~AppVolumeControllerTest() override { controller_.setView(nullptr); }

    /// The record of a program whose plug-in is connected by now.
    MVCommAppValue& connected(ScriptedPlugin& plugin, std::uint32_t pid, const QString& name) {
        plugin.checkIn(pid, name.toStdString());
        EXPECT_TRUE(waitUntil([&] { return find(name) != nullptr; }));
        return *find(name);
    }

    MVCommAppValue* find(const QString& name) const {
        for (MVCommAppValue* const app : controller_.apps()) {
            if (app->processName() == name)
                return app;
        }
        return nullptr;
    }

    /// All commands that have been sent up to now: a marker is sent behind them.
    std::string sentTo(ScriptedPlugin& plugin) {
        constexpr std::int32_t markers = 1000; // and above
        static std::int32_t marker = markers;
        const MVCommConsoleMessage last{++marker, 0, 0, 0};
        model_.comm.sendMessage(&last);
        std::string text;
        EXPECT_TRUE(waitUntil([&] {
            for (const MVCommConsoleMessage& command : plugin.takeCommands()) {
                if (command.type == marker)
                    return true;
                if (command.type < markers)
                    text += std::to_string(command.type) + "," + std::to_string(command.pid) + "," +
                            std::to_string(command.reserved) + "," + std::to_string(command.value) +
                            " ";
            }
            return false;
        }));
        return text;
    }

    QVariantMap stored() const { return model_.defaults.dictionary("Apps"); }

    static void moveSlider(MVCommAppValue& app, double value) {
        app.setVolume(value);
        platform::NotificationCenter::standard().post(
            "MVCollectionViewItemSliderChangedNotification", QVariant::fromValue(&app));
    }

    support::SystemLogRecorder log_;
    platform::RunLoop loop_;
    platform::MainQueueService mainQueue_{loop_};
    support::VolumeModel model_;
    AppVolumeController& controller_ = model_.controller;
    RecordingView view_;
};

} // namespace

TEST_F(AppVolumeControllerTest, ASlidersValueIsCutOffSentAndRemembered) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    MVCommAppValue& app = connected(plugin, 4711, "player");
    EXPECT_DOUBLE_EQ(app.volume(), 100.0) << "a percent";
    moveSlider(app, 0.999);
    EXPECT_EQ(sentTo(plugin), "9,4711,0,99 ");
    EXPECT_DOUBLE_EQ(app.volume(), 0.999) << "a fraction";
    EXPECT_EQ(stored(), (QVariantMap{{"player", QVariantMap{{"Volume", 99.0}}}}));
    EXPECT_EQ(controller_.percentOf(app), 99);
    controller_.update();
    EXPECT_DOUBLE_EQ(app.volume(), 99.0);
    moveSlider(app, 0.0);
    EXPECT_EQ(sentTo(plugin), "9,4711,0,0 ");
    moveSlider(app, 1.0);
    EXPECT_EQ(sentTo(plugin), "9,4711,0,100 ");
    EXPECT_FALSE(model_.defaults.value("Apps").isValid());
    EXPECT_TRUE(view_.told.filter("item").isEmpty()) << "items know their own gestures";
}

TEST_F(AppVolumeControllerTest, ANotificationAboutAnythingButARecordIsIgnored) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    connected(plugin, 1, "player");
    QObject stranger;
    for (const QVariant& object : {QVariant(), QVariant("player"), QVariant::fromValue(&stranger)})
        platform::NotificationCenter::standard().post(
            AppVolumeController::sliderChangedNotification, object);
    EXPECT_EQ(sentTo(plugin), "");
}

TEST_F(AppVolumeControllerTest, WholePercentsTakeTheSlidersRoad) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    MVCommAppValue& app = connected(plugin, 1, "player");
    std::string expected;
    for (int percent = 0; percent <= 100; ++percent) {
        controller_.setPercent(app, percent);
        EXPECT_EQ(controller_.percentOf(app), percent);
        EXPECT_LE(app.volume(), 1.0);
        expected += "9,1,0," + std::to_string(percent) + " ";
    }
    controller_.setPercent(app, 1000);
    EXPECT_EQ(sentTo(plugin), expected);
    EXPECT_EQ(view_.told.filter("item 0").size(), 102);
}

TEST_F(AppVolumeControllerTest, TheReleaseHasTheLastWordWhateverAMergeDid) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    MVCommAppValue& app = connected(plugin, 1, "player");
    moveSlider(app, 0.305);
    controller_.updateConnections();
    EXPECT_DOUBLE_EQ(app.volume(), 30.0);
    controller_.sliderReleased(app, 0.305);
    EXPECT_EQ(controller_.percentOf(app), 30);
    controller_.sliderReleased(app, 0.42);
    EXPECT_EQ(sentTo(plugin), "9,1,0,30 9,1,0,42 ") << "a repetition says nothing new";
}

TEST_F(AppVolumeControllerTest, MutesAreSentAndRemembered) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    MVCommAppValue& app = connected(plugin, 7, "coreaudiod");
    app.setMuted(true);
    controller_.appWasMuted(app);
    EXPECT_EQ(sentTo(plugin), "10,7,0,1 ");
    EXPECT_EQ(stored(), (QVariantMap{{"Sound Effects", QVariantMap{{"Mute", true}}}}));
    controller_.setMuted(app, false);
    EXPECT_EQ(sentTo(plugin), "10,7,0,0 ");
    EXPECT_TRUE(stored().isEmpty());
}

TEST_F(AppVolumeControllerTest, RestoringTellsRealChangesAndSendsNothing) {
    model_.defaults.set("Apps",
                        QVariantMap{{"player", QVariantMap{{"Volume", 40}, {"Mute", true}}}});
    AppVolumeController restoring(
        {model_.comm, model_.ignoredApps, model_.workspace, model_.defaults, {}});
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(1, "player");
    ASSERT_TRUE(waitUntil([&] { return !restoring.apps().isEmpty(); }));
    MVCommAppValue& app = *restoring.apps()[0];
    EXPECT_DOUBLE_EQ(app.volume(), 40.0);
    EXPECT_TRUE(app.muted());
    const QSignalSpy volumes(&app, &MVCommAppValue::volumeChanged);
    int mutes = 0;
    QObject::connect(&app, &MVCommAppValue::mutedChanged, &app, [&] {
        ++mutes;
        restoring.appWasMuted(app); // as an item does that watches its record
    });
    restoring.update();
    EXPECT_EQ(volumes.size() + mutes, 0);
    restoring.changedElsewhere(1, 55, false);
    EXPECT_EQ(volumes.size(), 1);
    EXPECT_EQ(mutes, 1);
    EXPECT_EQ(sentTo(plugin), "");
}

TEST_F(AppVolumeControllerTest, LevelsGoToTheRecordAndItsItemWhenThePercentChanges) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    ScriptedPlugin other(MVCommMainSocketPath());
    connected(plugin, 1, "zoom");
    connected(other, 2, "alpha");
    view_.told.clear();
    const auto report = [&](std::uint32_t pid, float level) {
        const MVCommActivityMessage message{kMVCommActivity, pid, level};
        controller_.handleActivity(&message);
    };
    report(1, 0.456F);
    report(1, 0.4561F);
    report(3, 1.0F); // nobody's
    report(1, 1.7F);
    report(2, 0.25F);
    report(1, -0.3F);
    EXPECT_EQ(view_.told, (QStringList{"activity 1 45 0.456", "activity 1 100 1",
                                       "activity 0 25 0.25", "activity 1 0 0"}));
    EXPECT_EQ(find("alpha")->activity(), 25);
    controller_.setView(nullptr);
    report(1, 0.5F);
    EXPECT_EQ(find("zoom")->activity(), 50);
    plugin.reportLevel(1, 0.75F);
    EXPECT_TRUE(waitUntil([&] { return find("zoom")->activity() == 75; })) << "off the wire";
}

TEST_F(AppVolumeControllerTest, TheViewIsToldOnceWhenBothSourcesAreMerged) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    model_.workspace.setRunningApplications({{1, "player", {}}, {2, "Editor", {}}});
    EXPECT_EQ(view_.told, (QStringList{"will", "did Editor player"}));
    const MVCommAppValue* const record = find("player");
    plugin.checkIn(1, "player");
    view_.told.clear();
    ASSERT_TRUE(waitUntil([&] { return !view_.told.isEmpty(); }));
    plugin.disconnect();
    ASSERT_TRUE(waitUntil([&] { return view_.told.size() == 4; }));
    EXPECT_EQ(view_.told, (QStringList{"will", "did Editor player", "will", "did Editor player"}));
    EXPECT_EQ(find("player"), record) << "without flicker";
    view_.told.clear();
    controller_.update();
    EXPECT_EQ(view_.told, (QStringList{"will", "did Editor player"}));
}

TEST_F(AppVolumeControllerTest, LaunchesAndQuitsAreLoggedInOneHarmlessLine) {
    model_.workspace.setRunningApplications({{1, "first", {}}});
    log_.clear();
    model_.workspace.setRunningApplications({{2, "Finder", {}},
                                             {3, "a\nb\u202e", {}},
                                             {static_cast<std::uint32_t>(::getpid()), "me", {}}});
    std::vector<std::string> texts;
    for (const auto& line : log_.lines())
        texts.push_back(line.text);
    EXPECT_EQ(texts, (std::vector<std::string>{"'Finder' launched (ignored)",
                                               "'a\\nb\\u202e' launched", "'first' quit"}));
}

TEST_F(AppVolumeControllerTest, WhatIsChangedElsewhereIsTakenOverWithoutACommand) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    controller_.changedElsewhere(1, 150, true); // has no record yet
    controller_.notControllable(1, "why");
    controller_.notControllable(2, "other");
    MVCommAppValue& app = connected(plugin, 1, "player");
    EXPECT_EQ(controller_.percentOf(app), 100) << "it is clamped";
    EXPECT_TRUE(app.muted());
    EXPECT_EQ(controller_.reasonNotControllable(app), "why");
    EXPECT_EQ(stored(), (QVariantMap{{"player", QVariantMap{{"Mute", true}}}}));

    view_.told.clear();
    controller_.changedElsewhere(1, 33, false);
    controller_.notControllable(1, QString());
    EXPECT_DOUBLE_EQ(app.volume(), 33.0);
    EXPECT_FALSE(app.muted());
    EXPECT_EQ(stored(), (QVariantMap{{"player", QVariantMap{{"Volume", 33.0}}}}));
    EXPECT_EQ(controller_.reasonNotControllable(app), QString());
    EXPECT_EQ(view_.told, (QStringList{"item 0", "item 0"}));
    controller_.notControllable(1, "again");
    controller_.pluginHasGone();
    EXPECT_EQ(controller_.reasonNotControllable(app), QString());
    EXPECT_EQ(sentTo(plugin), "");
}

TEST_F(AppVolumeControllerTest, TheWindowGetsItsLimitsAndItsPlace) {
    EXPECT_EQ(view_.minimum, QSizeF(400, 102));
    EXPECT_DOUBLE_EQ(view_.maximum.height(), 1222);
    EXPECT_DOUBLE_EQ(controller_.windowWillResize({500, 122}).height(), 142);
    EXPECT_EQ(view_.place, QRect()) << "none is remembered";
    view_.place = {5, 6, 700, 142};
    controller_.shutdown();
    view_.place = {};
    controller_.setView(&view_);
    EXPECT_EQ(view_.place, QRect(5, 6, 700, 142));
    view_.place = {};
    model_.defaults.set("MainWindow", "nonsense");
    controller_.setView(&view_);
    EXPECT_EQ(view_.place, QRect());
}

TEST_F(AppVolumeControllerTest, TheNewestOneIsTheSharedOne) {
    EXPECT_EQ(AppVolumeController::sharedController(), &controller_);
    model_.defaults.set("Apps", "malformed");
    {
        const AppVolumeController newer(
            {model_.comm, model_.ignoredApps, model_.workspace, model_.defaults, {}});
        EXPECT_EQ(AppVolumeController::sharedController(), &newer);
        EXPECT_GE(newer.initTime(), controller_.initTime());
    }
    EXPECT_EQ(AppVolumeController::sharedController(), nullptr);
}

namespace {

/// With preferences in a file, one folder for a copy, and a gate before the copying.
class IgnoringTest : public AppVolumeControllerTest {
  protected:
    IgnoringTest() { controller_.setView(nullptr); }
    ~IgnoringTest() override { open(); }

    void open() {
        if (!std::exchange(isOpen_, true))
            gate_.set_value();
    }

    QStringList ignoredInCopy() const {
        QFile file(QString::fromStdString(copies_ / "p.plist"));
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return platform::parsePropertyList(file.readAll())
            .value_or(QVariant())
            .toMap()["CustomIgnoredApps"]
            .toStringList();
    }

    const support::PrivateFolder folder_;
    const std::filesystem::path copies_ = folder_.path();
    const std::filesystem::path file_ = folder_.path() / "own/p.plist";
    platform::UserDefaults defaults_{file_};
    MVIgnoredApps ignored_{defaults_};
    std::promise<void> gate_;
    bool isOpen_ = false;
    AppVolumeController ignoring_{{model_.comm, ignored_, model_.workspace, defaults_, file_,
                                   [this, passed = std::shared_future(gate_.get_future())] {
                                       passed.wait();
                                       return std::vector<std::string>{copies_};
                                   }}};
};

} // namespace

TEST_F(IgnoringTest, PluginsAreToldWhenTheCopiesAreInPlaceAndTheMainThreadDoesNotWait) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(1, "player");
    ASSERT_TRUE(waitUntil([&] { return ignoring_.apps().size() == 1; }));
    ignored_.addCustomIgnore("PLAYER");
    EXPECT_TRUE(ignoring_.apps().isEmpty()) << "at once";
    EXPECT_EQ(sentTo(plugin), "") << "it was at full volume, and nothing is copied yet";
    open();
    QStringList atThatTime;
    EXPECT_TRUE(waitUntil([&] {
        const auto commands = plugin.takeCommands();
        if (commands.empty() || commands[0].type != kMVCommIgnoreListChanged)
            return false;
        atThatTime = ignoredInCopy();
        return true;
    }));
    EXPECT_EQ(atThatTime, QStringList{"PLAYER"});
}

TEST_F(IgnoringTest, PluginsAreToldAlsoWhenCopyingFails) {
    std::filesystem::create_directories(copies_ / "p.plist/precious");
    open();
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(1, "player");
    ASSERT_TRUE(waitUntil([&] { return ignoring_.apps().size() == 1; }));
    ignored_.addCustomIgnore("other");
    EXPECT_TRUE(waitUntil([&] {
        const auto commands = plugin.takeCommands();
        return !commands.empty() && commands[0].type == kMVCommIgnoreListChanged;
    }));
}

TEST_F(IgnoringTest, AnIgnoredProgramIsFreedOnceAndLeftAloneUntilItIsNotIgnoredAnyMore) {
    ScriptedPlugin first(MVCommMainSocketPath());
    ScriptedPlugin second(MVCommMainSocketPath());
    first.checkIn(1, "player");
    second.checkIn(2, "player");
    ASSERT_TRUE(waitUntil([&] { return ignoring_.apps().size() == 1; }));
    ASSERT_TRUE(waitUntil([&] { return MVCommCopyConnectedProcesses(model_.comm).size() == 2; }));
    ignoring_.update();
    ignoring_.setPercent(*ignoring_.apps()[0], 40);
    ignoring_.setMuted(*ignoring_.apps()[0], true);
    EXPECT_EQ(sentTo(first), "9,1,0,40 10,1,0,1 ");
    sentTo(second);

    ignored_.addCustomIgnore("player");
    EXPECT_EQ(sentTo(first), "9,1,0,100 10,1,0,0 9,2,0,100 10,2,0,0 ");
    ignored_.addCustomIgnore("other");
    ignoring_.changedElsewhere(1, 70, false);
    ignoring_.update();
    EXPECT_EQ(sentTo(first), "");
    ignored_.removeCustomIgnore("player");
    ASSERT_EQ(ignoring_.apps().size(), 1);
    EXPECT_EQ(sentTo(first), "") << "the plug-in reads what is remembered";
}

TEST_F(IgnoringTest, WhatIsRememberedOfAnIgnoredProgramStays) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(1, "player");
    ASSERT_TRUE(waitUntil([&] { return ignoring_.apps().size() == 1; }));
    ignoring_.setPercent(*ignoring_.apps()[0], 40);
    ignored_.addCustomIgnore("player");
    ignored_.removeCustomIgnore("player");
    ASSERT_EQ(ignoring_.apps().size(), 1);
    EXPECT_DOUBLE_EQ(ignoring_.apps()[0]->volume(), 40.0);
}
