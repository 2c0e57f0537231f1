#include "ui/VolumeWindow.h"

#include "comm/MVComm.h"
#include "comm/MVCommSocketPath.h"
#include "platform/RunLoop.h"
#include "platform/RunLoopNotifier.h"
#include "support/ScriptedPlugin.h"
#include "support/VolumeWindowProbe.h"
#include "support/WaitUntil.h"

#include <QCheckBox>
#include <QLabel>
#include <QProgressBar>
#include <QSlider>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

using support::RowProbe;
using support::ScriptedPlugin;

namespace {

class VolumeWindowTest : public testing::Test {
  protected:
    VolumeWindowTest() {
        current = &window_;
        comm_.setAppConnectCallback([] { current->updateConnections(); });
        comm_.setAppDisconnectCallback([] { current->updateConnections(); });
        EXPECT_TRUE(
            comm_.setupPluginConnectionWithCallBack([](const MVCommActivityMessage* message) {
                current->handleActivity(message->pid, message->level);
            }));
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

    static inline VolumeWindow* current = nullptr;

    platform::RunLoop loop_;
    platform::RunLoopNotifier notifier_{loop_};
    MVComm comm_;
    VolumeWindow window_{comm_};
};

} // namespace

TEST_F(VolumeWindowTest, ANameStaysInItsLineWhateverItHolds) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(1, "two\nlines\u2028\u0085and \u202egnp.exe", "/x\n\u202ey");
    ASSERT_TRUE(showsRows({QStringLiteral("two lines  and gnp.exe")}));
    const auto labels = window_.findChildren<QLabel*>();
    const auto shown = std::ranges::find_if(
        labels, [](const QLabel* label) { return label->toolTip().contains(QLatin1String("/x")); });
    ASSERT_NE(shown, labels.end());
    EXPECT_EQ((*shown)->toolTip(), QStringLiteral("<p>/x y</p>"));
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
        ASSERT_TRUE(showsRows({QStringLiteral("first"), QStringLiteral("<b>second</b>")}));
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

TEST_F(VolumeWindowTest, LevelsAreShownInPercentWhateverArrives) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(1, "player");
    ASSERT_TRUE(showsRows({QStringLiteral("player")}));
    const RowProbe row(window_, QStringLiteral("player"));
    struct Case {
        float level;
        int percent;
    };
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinity = std::numeric_limits<float>::infinity();
    for (const Case& report : {Case{0.759F, 75}, Case{nan, 0}, Case{1.0F, 100}, Case{-1.0F, 0},
                               Case{infinity, 100}, Case{-infinity, 0}}) {
        window_.handleActivity(1, report.level);
        EXPECT_EQ(row.level->value(), report.percent) << report.level;
    }
    window_.handleActivity(2, 1.0F); // nobody's
    plugin.reportLevel(1, 0.5F);
    EXPECT_TRUE(support::waitUntil([&] { return row.level->value() == 50; }));
    EXPECT_TRUE(support::waitUntil([&] { return row.level->value() == 0; })) << "silence again";
}

TEST_F(VolumeWindowTest, ARowKeepsItsSettingsWhileOthersComeAndGo) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(1, "stays");
    ASSERT_TRUE(showsRows({QStringLiteral("stays")}));
    RowProbe(window_, QStringLiteral("stays")).slider->setValue(30);
    ScriptedPlugin other(MVCommMainSocketPath());
    other.checkIn(2, "other");
    ASSERT_TRUE(showsRows({QStringLiteral("stays"), QStringLiteral("other")}));
    EXPECT_EQ(RowProbe(window_, QStringLiteral("stays")).slider->value(), 30);
    EXPECT_EQ(RowProbe(window_, QStringLiteral("other")).slider->value(), 100);
}

TEST_F(VolumeWindowTest, AProblemStandsWhereTheRowsWouldBe) {
    window_.showProblem(QStringLiteral("why"));
    EXPECT_EQ(support::notice(window_), QStringLiteral("why"));
}
