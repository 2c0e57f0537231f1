#include "model/MVCommAppValue.h"

#include "comm/MVCommConnectedProcess.h"
#include "support/PlainWorkspace.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QSignalSpy>

#include <limits>

namespace {

class MVCommAppValueTest : public testing::Test {
  protected:
    std::unique_ptr<MVCommAppValue> connected(const QString& name, bool isAudioDaemon = false) {
        const MVCommConnectedProcess process{4711, name, "/usr/bin/x", isAudioDaemon};
        return MVCommAppValue::initWithApp(&process, workspace_);
    }

    support::PlainWorkspace workspace_;
};

} // namespace

TEST_F(MVCommAppValueTest, IsMadeFromAConnectedProcess) {
    EXPECT_EQ(MVCommAppValue::initWithApp(nullptr, workspace_), nullptr);
    const QIcon icon = workspace_.addIcon("/usr/bin/x");
    const auto value = connected("Player");
    EXPECT_EQ(value->icon().cacheKey(), icon.cacheKey());
    EXPECT_EQ(value->processName(), "Player");
    EXPECT_EQ(value->displayName(), "Player");
    EXPECT_EQ(value->path(), "/usr/bin/x");
    EXPECT_EQ(value->pid(), 4711U);
    EXPECT_FALSE(value->isBeeps());
    EXPECT_FALSE(value->isRunningApp());
}

TEST_F(MVCommAppValueTest, IsCreatedFromARunningProgramWithTheIconOfItsBundleIfItHasOne) {
    const QIcon icon = workspace_.addIcon("/opt/Player.app");
    workspace_.addIcon(""); // asking for no path would be answered with this
    const auto bundled =
        MVCommAppValue::initWithRunningApp({12, "Player", "/opt/Player.app"}, workspace_);
    EXPECT_EQ(bundled->icon().cacheKey(), icon.cacheKey());
    EXPECT_EQ(bundled->processName(), "Player");
    EXPECT_EQ(bundled->path(), "/opt/Player.app");
    EXPECT_EQ(bundled->pid(), 12U);
    EXPECT_TRUE(bundled->isRunningApp());
    EXPECT_FALSE(bundled->isBeeps());

    const auto bare = MVCommAppValue::initWithRunningApp({13, "coreaudiod", ""}, workspace_);
    EXPECT_EQ(bare->icon().cacheKey(), workspace_.genericApplicationIcon().cacheKey());
    EXPECT_FALSE(bare->isBeeps()) << "only a connection is the system's sound";
}

TEST_F(MVCommAppValueTest, TakesAnotherIconWhenTheDesktopHasOneAndSaysSoThen) {
    const auto value = connected("Player");
    const auto bare =
        MVCommAppValue::initWithRunningApp({13, "Bare", "", "/usr/bin/x"}, workspace_);
    QSignalSpy changes(value.get(), &MVCommAppValue::iconChanged);
    value->updateIcon(workspace_);
    EXPECT_EQ(changes.count(), 0);
    const QIcon icon = workspace_.addIcon("/usr/bin/x");
    value->updateIcon(workspace_);
    bare->updateIcon(workspace_);
    EXPECT_EQ(changes.count(), 1);
    EXPECT_EQ(value->icon().cacheKey(), icon.cacheKey());
    EXPECT_EQ(bare->icon().cacheKey(), workspace_.genericApplicationIcon().cacheKey());
    EXPECT_EQ(bare->path(), "/usr/bin/x") << "as of one that is connected";
}

TEST_F(MVCommAppValueTest, TheSystemsSoundHasAWordOfItsOwn) {
    const auto value = connected("coreaudiod", true);
    EXPECT_TRUE(value->isBeeps());
    EXPECT_EQ(value->processName(), "coreaudiod");
    EXPECT_EQ(value->displayName(), "Sound Effects");
    for (const char* const other : {"CoreAudioD", "coreaudiod ", ""})
        EXPECT_EQ(MVCommAppValue::displayNameForProcessName(other), other);
}

TEST_F(MVCommAppValueTest, ReturnsAndSignalsChangesOfTheActivity) {
    const auto value = connected("Player");
    QSignalSpy activity(value.get(), &MVCommAppValue::activityChanged);
    QSignalSpy hasActivity(value.get(), &MVCommAppValue::hasActivityChanged);
    const struct {
        qint64 activity;
        int answer;
        int told;
        int hasActivityTold;
    } steps[] = {{0, 0, 0, 0},  {40, 2, 1, 1}, {40, 0, 1, 1},
                 {55, 3, 2, 1}, {0, 1, 3, 2},  {0, 0, 3, 2}};
    for (const auto& step : steps) {
        SCOPED_TRACE(step.activity);
        EXPECT_EQ(value->setActivity(step.activity), step.answer);
        EXPECT_EQ(value->activity(), step.activity);
        EXPECT_EQ(value->hasActivity(), step.activity > 0);
        EXPECT_EQ(activity.count(), step.told);
        EXPECT_EQ(hasActivity.count(), step.hasActivityTold);
    }
}

TEST_F(MVCommAppValueTest, StaysConsistentWhenAnObserverSetsTheNextActivity) {
    const auto value = connected("Player");
    QObject::connect(value.get(), &MVCommAppValue::activityChanged, value.get(),
                     [&](qint64) { value->setActivity(0); });
    value->setActivity(40);
    EXPECT_EQ(value->activity(), 0);
    EXPECT_FALSE(value->hasActivity());
}

TEST_F(MVCommAppValueTest, TellsRealChangesOfVolumeAndMuteOnly) {
    const auto value = connected("Player");
    QSignalSpy volume(value.get(), &MVCommAppValue::volumeChanged);
    QSignalSpy muted(value.get(), &MVCommAppValue::mutedChanged);
    value->setVolume(0);
    value->setMuted(false);
    value->setVolume(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(volume.count() + muted.count(), 0);
    EXPECT_EQ(value->volume(), 0);

    value->setVolume(0.999);
    value->setVolume(0.999);
    value->setVolume(0.9990001);
    value->setMuted(true);
    value->setMuted(true);
    EXPECT_EQ(volume.count(), 2);
    EXPECT_EQ(muted.count(), 1);
    EXPECT_EQ(value->volume(), 0.9990001);
    EXPECT_TRUE(value->muted());
}
