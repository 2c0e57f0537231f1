#include "AppVolumeFixture.h"

#include <QSignalSpy>

#include <unistd.h>

using support::ScriptedPlugin;
using support::waitUntil;

using AppVolumeControllerTest = AppVolumeFixture;

TEST_F(AppVolumeControllerTest, ASlidersValueIsCutOffSentAndRemembered) {
    MVCommAppValue& app = connected(4711, "player");
    EXPECT_DOUBLE_EQ(app.volume(), 100.0) << "a percent";
    moveSlider(app, 0.999);
    EXPECT_EQ(sent(), "9,4711,0,99 ");
    EXPECT_DOUBLE_EQ(app.volume(), 0.999) << "a fraction";
    EXPECT_EQ(stored(), (QVariantMap{{"player", QVariantMap{{"Volume", 99.0}}}}));
    EXPECT_EQ(controller_.percentOf(app), 99);
    controller_.update();
    EXPECT_DOUBLE_EQ(app.volume(), 99.0);
    moveSlider(app, 0.0);
    EXPECT_EQ(sent(), "9,4711,0,0 ");
    moveSlider(app, 1.0);
    EXPECT_EQ(sent(), "9,4711,0,100 ");
    EXPECT_FALSE(model_.defaults.value("Apps").isValid());
    EXPECT_TRUE(view_.told.filter("item").isEmpty()) << "items know their own gestures";
}

TEST_F(AppVolumeControllerTest, TheDesktopIsAskedWhatRunsAndItsIconsAreTaken) {
    const int looks = model_.workspace.looks();
    MVCommAppValue& app = connected(4711, "player");
    EXPECT_GT(model_.workspace.looks(), looks) << "when a plug-in connects";
    const int connects = model_.workspace.looks();
    controller_.update();
    EXPECT_EQ(model_.workspace.looks(), connects + 1) << "when the window is activated";
    const QIcon icon = model_.workspace.addIcon(app.path());
    model_.workspace.setRunningApplications({{4711, "player", {}}});
    EXPECT_EQ(model_.workspace.looks(), connects + 1) << "but it need not be told its own news";
    EXPECT_EQ(app.icon().cacheKey(), icon.cacheKey());
}

TEST_F(AppVolumeControllerTest, ANotificationAboutAnythingButARecordIsIgnored) {
    connected(1, "player");
    QObject stranger;
    for (const QVariant& object : {QVariant(), QVariant("player"), QVariant::fromValue(&stranger)})
        platform::NotificationCenter::standard().post(
            AppVolumeController::sliderChangedNotification, object);
    EXPECT_EQ(sent(), "");
}

TEST_F(AppVolumeControllerTest, WholePercentsTakeTheSlidersRoad) {
    MVCommAppValue& app = connected(1, "player");
    std::string expected;
    for (int percent = 0; percent <= 100; ++percent) {
        controller_.setPercent(app, percent);
        EXPECT_EQ(controller_.percentOf(app), percent);
        EXPECT_LE(app.volume(), 1.0);
        expected += "9,1,0," + std::to_string(percent) + " ";
    }
    controller_.setPercent(app, 1000);
    EXPECT_EQ(sent(), expected);
    EXPECT_EQ(view_.told.filter("item 0").size(), 102);
}

TEST_F(AppVolumeControllerTest, TheReleaseHasTheLastWordWhateverAMergeDid) {
    MVCommAppValue& app = connected(1, "player");
    moveSlider(app, 0.305);
    controller_.updateConnections();
    EXPECT_DOUBLE_EQ(app.volume(), 30.0);
    controller_.sliderReleased(app, 0.305);
    EXPECT_EQ(controller_.percentOf(app), 30);
    controller_.sliderReleased(app, 0.42);
    EXPECT_EQ(sent(), "9,1,0,30 9,1,0,42 ") << "a repetition says nothing new";
}

TEST_F(AppVolumeControllerTest, MutesAreSentAndRememberedOnce) {
    MVCommAppValue& app = connected(7, "coreaudiod");
    int gestures = 0;
    controller_.setGestureObserver(
        {nullptr, nullptr, [&](const MVCommAppValue&, bool) { ++gestures; }});
    app.setMuted(true);
    controller_.appWasMuted(app);
    EXPECT_EQ(sent(), "10,7,0,1 ");
    controller_.setMuted(app, true);
    EXPECT_EQ(gestures, 1) << "that has changed nothing";
    EXPECT_EQ(stored(), (QVariantMap{{"Sound Effects", QVariantMap{{"Mute", true}}}}));
    controller_.setMuted(app, false);
    EXPECT_EQ(sent(), "10,7,0,0 ");
    EXPECT_TRUE(stored().isEmpty());
    EXPECT_EQ(gestures, 2);
}

TEST_F(AppVolumeControllerTest, RestoringTellsRealChangesAndSendsNothing) {
    model_.defaults.set("Apps",
                        QVariantMap{{"player", QVariantMap{{"Volume", 40}, {"Mute", true}}}});
    AppVolumeController restoring(
        {model_.comm, model_.ignoredApps, model_.workspace, model_.defaults, {}});
    plugin_.checkIn(1, "player");
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
    restoring.changedElsewhere(1, {55, false});
    EXPECT_EQ(volumes.size(), 1);
    EXPECT_EQ(mutes, 1);
    EXPECT_EQ(sent(), "");
}

TEST_F(AppVolumeControllerTest, LevelsGoToTheRecordAndItsItemWhenThePercentChanges) {
    ScriptedPlugin other(MVCommMainSocketPath());
    connected(1, "zoom");
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
    plugin_.reportLevel(1, 0.75F);
    EXPECT_TRUE(waitUntil([&] { return find("zoom")->activity() == 75; })) << "off the wire";
}

TEST_F(AppVolumeControllerTest, TheViewIsToldOnceWhenBothSourcesAreMerged) {
    model_.workspace.setRunningApplications({{1, "player", {}}, {2, "Editor", {}}});
    EXPECT_EQ(view_.told, (QStringList{"will", "did Editor player"}));
    const MVCommAppValue* const record = find("player");
    plugin_.checkIn(1, "player");
    view_.told.clear();
    ASSERT_TRUE(waitUntil([&] { return !view_.told.isEmpty(); }));
    plugin_.disconnect();
    ASSERT_TRUE(waitUntil([&] { return view_.told.size() == 4; }));
    EXPECT_EQ(view_.told, (QStringList{"will", "did Editor player", "will", "did Editor player"}));
    EXPECT_EQ(find("player"), record) << "without flicker";
    view_.told.clear();
    controller_.update();
    EXPECT_EQ(view_.told, (QStringList{"will", "did Editor player"}));
}

TEST_F(AppVolumeControllerTest, ProgramsThatLeaveTogetherAreMergedOnce) {
    std::vector<ScriptedPlugin> plugins;
    for (std::uint32_t pid = 1; pid <= 5; ++pid)
        plugins.emplace_back(MVCommMainSocketPath()).checkIn(pid, "player " + std::to_string(pid));
    const auto has = [this](int count) { return controller_.apps().size() == count; };
    ASSERT_TRUE(waitUntil([&] { return has(5); }));
    view_.told.clear();
    plugins.erase(plugins.begin() + 1, plugins.end());
    ASSERT_TRUE(waitUntil([&] { return has(1); }));
    EXPECT_EQ(view_.told, (QStringList{"will", "did player 1"}));

    controller_.catchUp();
    EXPECT_EQ(view_.told.size(), 2) << "nothing is left to be done";
    plugins.clear();
    MVCommAppValue& leaving = *controller_.apps()[0];
    controller_.updateConnectionsSoon();
    moveSlider(leaving, 0.3);
    EXPECT_EQ(controller_.percentOf(leaving), 30) << "until it goes it can be set";
    controller_.updateConnectionsSoon();
    controller_.catchUp();
    EXPECT_EQ(view_.told.size(), 4);
    loop_.turn();
    EXPECT_TRUE(has(0));
    EXPECT_TRUE(stored().contains("player 1"));
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
    controller_.changedElsewhere(1, {150, true}); // has no record yet
    controller_.notControllable(1, "why");
    controller_.notControllable(2, "other");
    MVCommAppValue& app = connected(1, "player");
    EXPECT_EQ(controller_.percentOf(app), 100) << "it is clamped";
    EXPECT_TRUE(app.muted());
    EXPECT_EQ(controller_.reasonNotControllable(app), "why");
    EXPECT_EQ(stored(), (QVariantMap{{"player", QVariantMap{{"Mute", true}}}}));

    view_.told.clear();
    controller_.changedElsewhere(1, {33, false});
    controller_.notControllable(1, QString());
    EXPECT_DOUBLE_EQ(app.volume(), 33.0);
    EXPECT_FALSE(app.muted());
    EXPECT_EQ(stored(), (QVariantMap{{"player", QVariantMap{{"Volume", 33.0}}}}));
    EXPECT_EQ(controller_.reasonNotControllable(app), QString());
    EXPECT_EQ(view_.told, (QStringList{"item 0", "item 0"}));
    controller_.notControllable(1, "again");
    controller_.pluginHasGone();
    EXPECT_EQ(controller_.reasonNotControllable(app), QString());
    EXPECT_EQ(sent(), "");
}

TEST_F(AppVolumeControllerTest, WhatAnotherProgramOfTheNameIsGivenElsewhereIsTakenOverToo) {
    ScriptedPlugin first(MVCommMainSocketPath());
    ScriptedPlugin second(MVCommMainSocketPath());
    MVCommAppValue& app = connected(first, 1, "player");
    controller_.changedElsewhere(2, {70, true}); // has no connection yet
    controller_.notControllable(2, "why");
    second.checkIn(2, "player");
    EXPECT_TRUE(waitUntil([&] { return controller_.percentOf(app) == 70; }));
    EXPECT_TRUE(app.muted());
    view_.told.clear();
    controller_.changedElsewhere(2, {30, false});
    EXPECT_DOUBLE_EQ(app.volume(), 30.0);
    EXPECT_EQ(view_.told, QStringList{"item 0"});
    EXPECT_EQ(stored(), (QVariantMap{{"player", QVariantMap{{"Volume", 30.0}}}}));
    EXPECT_EQ(sentTo(first), "");

    EXPECT_EQ(controller_.reasonNotControllable(app), "") << "the first one can be set";
    second.disconnect();
    ASSERT_TRUE(waitUntil([&] { return MVCommCopyConnectedProcesses(model_.comm).size() == 1; }));
    controller_.update();
    ScriptedPlugin next(MVCommMainSocketPath());
    EXPECT_EQ(controller_.reasonNotControllable(connected(next, 2, "zoom")), "")
        << "the number is another program's now";
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
    {
        const AppVolumeController newer(
            {model_.comm, model_.ignoredApps, model_.workspace, model_.defaults, {}});
        EXPECT_EQ(AppVolumeController::sharedController(), &newer);
        EXPECT_GE(newer.initTime(), controller_.initTime());
    }
    EXPECT_EQ(AppVolumeController::sharedController(), nullptr);
}
