#include "ui/VolumeWindow.h"

#include "comm/MVCommSocketPath.h"
#include "platform/RunLoop.h"
#include "platform/RunLoopNotifier.h"
#include "support/ScriptedPlugin.h"
#include "support/VolumeModel.h"
#include "support/VolumeWindowProbe.h"
#include "support/WaitUntil.h"

#include <QCheckBox>
#include <QLabel>
#include <QProgressBar>
#include <QScreen>
#include <QSlider>
#include <QTest>

#include <gtest/gtest.h>

using support::RowProbe;
using support::ScriptedPlugin;

namespace {

class VolumeWindowTest : public testing::Test {
  protected:
    VolumeWindowTest() {
        EXPECT_TRUE(model_.serve());
        window_.show();
    }

    bool showsRows(const QStringList& names) const {
        return support::waitUntil([&] { return support::rowNames(window_) == names; });
    }

    static std::string received(ScriptedPlugin& plugin) {
        std::string text;
        EXPECT_TRUE(support::waitUntil([&] {
            for (const MVCommConsoleMessage& command : plugin.takeCommands())
                text += std::to_string(command.type) + "," + std::to_string(command.pid) + "," +
                        std::to_string(command.value) + " ";
            return !text.empty();
        }));
        return text;
    }

    platform::RunLoop loop_;
    platform::RunLoopNotifier notifier_{loop_};
    support::VolumeModel model_;
    VolumeWindow window_{model_.controller};
};

} // namespace

TEST_F(VolumeWindowTest, ANameStaysInItsLineWhateverItHolds) {
    model_.workspace.setRunningApplications(
        {{1, QStringLiteral("two\nlines\u2028\u0085and \u202egnp.exe <b>"), {}},
         {2, QString(10000, QLatin1Char('z')), {}}});
    ASSERT_EQ(support::rowNames(window_).size(), 2);
    EXPECT_LT(support::rowNames(window_)[1].size(), 1000);
    EXPECT_EQ(support::rowNames(window_)[0], QStringLiteral("two lines  and gnp.exe <b>"));
    const auto labels = window_.findChildren<QLabel*>(QStringLiteral("name"));
    ASSERT_EQ(labels.size(), 2);
    EXPECT_EQ(labels[0]->toolTip(), QStringLiteral("<p>two lines  and gnp.exe &lt;b&gt;</p>"));
    EXPECT_LT(labels[1]->toolTip().size(), 1000);
}

TEST_F(VolumeWindowTest, AProgramWhoseNameCannotBeSeenIsShownByItsNumber) {
    model_.workspace.setRunningApplications(
        {{12, QStringLiteral(" \t\n\u00a0\u200b\u202e\u200f"), {}},
         {34, QStringLiteral("\u200fשם"), {}}});
    EXPECT_EQ(support::rowNames(window_),
              (QStringList{QStringLiteral("Process 12"), QStringLiteral("\u200fשם")}));
}

TEST_F(VolumeWindowTest, TheTipOfARowTellsTheProgramsPath) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(1, "player", "/opt/<b>\n/player");
    ASSERT_TRUE(showsRows({QStringLiteral("player")}));
    EXPECT_EQ(window_.findChild<QLabel*>(QStringLiteral("name"))->toolTip(),
              QStringLiteral("<p>player</p><p>/opt/&lt;b&gt; /player</p>"));
}

TEST_F(VolumeWindowTest, ShowsARowForEachProgramAndSaysWhenThereIsNone) {
    EXPECT_TRUE(support::notice(window_).contains(QStringLiteral("not connected")));
    ScriptedPlugin first(MVCommMainSocketPath());
    first.checkIn(1, "first");
    ASSERT_TRUE(showsRows({QStringLiteral("first")}));
    EXPECT_EQ(support::notice(window_), QString());
    {
        ScriptedPlugin second(MVCommMainSocketPath());
        second.checkIn(2, "<b>second</b>");
        const ScriptedPlugin neverChecksIn(MVCommMainSocketPath());
        ASSERT_TRUE(showsRows({QStringLiteral("<b>second</b>"), QStringLiteral("first")}));
    }
    ASSERT_TRUE(showsRows({QStringLiteral("first")}));
    first.disconnect();
    ASSERT_TRUE(showsRows({}));
    EXPECT_TRUE(support::notice(window_).contains(QStringLiteral("not connected")));
}

TEST_F(VolumeWindowTest, GesturesBecomeCommandsForTheRowsProgram) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(4711, "player");
    ASSERT_TRUE(showsRows({QStringLiteral("player")}));
    const RowProbe row(window_, QStringLiteral("player"));
    QTest::keyClick(row.slider, Qt::Key_Home);
    EXPECT_EQ(received(plugin), "9,4711,0 ");
    QTest::keyClick(row.slider, Qt::Key_End);
    EXPECT_EQ(received(plugin), "9,4711,100 ");
    QTest::keyClick(row.mute, Qt::Key_Space);
    EXPECT_EQ(received(plugin), "10,4711,1 ");
    QTest::keyClick(row.mute, Qt::Key_Space);
    EXPECT_EQ(received(plugin), "10,4711,0 ");
}

TEST_F(VolumeWindowTest, LevelsAreShownInPercent) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(1, "player");
    ASSERT_TRUE(showsRows({QStringLiteral("player")}));
    const RowProbe row(window_, QStringLiteral("player"));
    plugin.reportLevel(1, 0.5F);
    EXPECT_TRUE(support::waitUntil([&] { return row.level->value() == 50; }));
    EXPECT_TRUE(support::waitUntil([&] { return row.level->value() == 0; })) << "silence again";
}

TEST_F(VolumeWindowTest, WhatIsSetElsewhereMovesTheControlsButNotAHeldSlider) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(1, "player");
    ASSERT_TRUE(showsRows({QStringLiteral("player")}));
    const RowProbe row(window_, QStringLiteral("player"));
    model_.controller.changedElsewhere(1, 37, true);
    EXPECT_EQ(row.slider->value(), 37);
    EXPECT_TRUE(row.mute->isChecked());
    row.slider->setSliderDown(true);
    row.slider->setSliderPosition(62);
    model_.controller.changedElsewhere(1, 20, false);
    model_.controller.update();
    EXPECT_EQ(row.slider->value(), 62);
    row.slider->setSliderDown(false);
    EXPECT_EQ(model_.controller.percentOf(*model_.controller.apps()[0]), 62) << "the last word";
    EXPECT_EQ(row.slider->value(), 62);
    EXPECT_FALSE(row.mute->isChecked());
    EXPECT_EQ(received(plugin), "9,1,62 ") << "none for what was done elsewhere";
}

TEST_F(VolumeWindowTest, ASliderThatCannotBeMovedSaysWhy) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(1, "player");
    ASSERT_TRUE(showsRows({QStringLiteral("player")}));
    const RowProbe row(window_, QStringLiteral("player"));
    EXPECT_TRUE(row.slider->toolTip().isEmpty());
    model_.controller.notControllable(1, QStringLiteral("It plays <past> the mixer"));
    EXPECT_FALSE(row.slider->isEnabled());
    EXPECT_EQ(row.slider->toolTip(), QStringLiteral("<p>It plays &lt;past&gt; the mixer</p>"));
    model_.controller.notControllable(1, QString());
    EXPECT_TRUE(row.slider->isEnabled());
    EXPECT_TRUE(row.slider->toolTip().isEmpty());
}

TEST_F(VolumeWindowTest, RowsLieInTheOrderOfTheRecordsAndStayTheSameOnes) {
    model_.workspace.setRunningApplications(
        {{1, QStringLiteral("b"), {}}, {2, QStringLiteral("d"), {}}});
    const QSlider* const slider = RowProbe(window_, QStringLiteral("d")).slider;
    model_.workspace.setRunningApplications(
        {{2, QStringLiteral("d"), {}}, {3, QStringLiteral("C"), {}}, {4, QStringLiteral("e"), {}}});
    ASSERT_TRUE(showsRows({QStringLiteral("C"), QStringLiteral("d"), QStringLiteral("e")}));
    EXPECT_EQ(RowProbe(window_, QStringLiteral("d")).slider, slider);
}

TEST_F(VolumeWindowTest, KeepsToItsLimitsAndToAPlaceThatCanBeSeen) {
    EXPECT_EQ(window_.minimumWidth(), 400);
    EXPECT_EQ((window_.height() - static_cast<int>(window_.titleBarHeight())) %
                  static_cast<int>(window_.itemHeight()),
              0);
    const QRect desktop = window_.screen()->availableGeometry();
    EXPECT_LE((window_.frame().center() - desktop.center()).manhattanLength(), 4);
    window_.setFrame({10, 20, 500, 282});
    EXPECT_EQ(window_.frame(), QRect(10, 20, 500, 282));
    window_.setFrame({100000, 100000, 600, 326});
    EXPECT_EQ(window_.frame(), QRect(10, 20, 600, 326));
}

TEST_F(VolumeWindowTest, ShowsWholeRowsWhateverHeightItIsGiven) {
    const auto becomes = [&](int height, int expected) {
        window_.resize(500, height);
        return support::waitUntil([&] { return window_.size() == QSize(500, expected); });
    };
    EXPECT_TRUE(becomes(18 + 5 * 44 + 21, 18 + 5 * 44)) << window_.height();
    EXPECT_TRUE(becomes(18 + 5 * 44 + 22, 18 + 6 * 44)) << window_.height();
    EXPECT_TRUE(becomes(18 + 40 * 44, 18 + 30 * 44)) << "the most";
    window_.setWindowState(Qt::WindowMaximized);
    EXPECT_TRUE(support::waitUntil([&] { return window_.width() > 500; }));
    EXPECT_EQ(window_.frame().size(), QSize(500, 18 + 30 * 44)) << "to be remembered";
}

TEST_F(VolumeWindowTest, ARowKeepsItsSettingsWhileOthersComeAndGo) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(1, "stays");
    ASSERT_TRUE(showsRows({QStringLiteral("stays")}));
    RowProbe(window_, QStringLiteral("stays")).slider->setValue(30);
    ScriptedPlugin other(MVCommMainSocketPath());
    other.checkIn(2, "other");
    ASSERT_TRUE(showsRows({QStringLiteral("other"), QStringLiteral("stays")}));
    EXPECT_EQ(RowProbe(window_, QStringLiteral("stays")).slider->value(), 30);
    EXPECT_EQ(RowProbe(window_, QStringLiteral("other")).slider->value(), 100);
}

TEST_F(VolumeWindowTest, AProblemStandsWhereTheRowsWouldBe) {
    model_.controller.showProblem(QStringLiteral("why"));
    EXPECT_EQ(support::notice(window_), QStringLiteral("why"));
}
