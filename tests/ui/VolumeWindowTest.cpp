#include "VolumeWindowFixture.h"

#include "ui/VolumeMenu.h"
#include "ui/items/MVCollectionViewTextField.h"
#include "ui/window/QNAboutBox.h"
#include "ui/window/UndoNotice.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QLabel>
#include <QScreen>

namespace {

class VolumeWindowTest : public VolumeWindowFixture {};

} // namespace

TEST_F(VolumeWindowTest, ANameStaysInItsLineWhateverItHolds) {
    model_.workspace.setRunningApplications(
        {{1, QStringLiteral("two\nlines\u2028\u0085and \u202egnp.exe <b>"), {}},
         {2, QString(10000, QLatin1Char('z')), {}}});
    const QStringList names = support::rowNames(window_);
    ASSERT_EQ(names.size(), 2);
    EXPECT_EQ(names[0], QStringLiteral("two lines  and gnp.exe <b>"));
    EXPECT_LT(names[1].size(), 1000);
    EXPECT_EQ(RowProbe(window_, names[0]).item->tipAt({}),
              QStringLiteral("two lines  and gnp.exe <b>"));
}

TEST_F(VolumeWindowTest, AProgramWhoseNameCannotBeSeenIsShownByItsNumber) {
    model_.workspace.setRunningApplications(
        {{12, QStringLiteral(" \t\n\u00a0\u200b\u202e\u200f"), {}},
         {34, QStringLiteral("\u200fשם"), {}}});
    EXPECT_EQ(support::rowNames(window_),
              (QStringList{QStringLiteral("Process 12"), QStringLiteral("\u200fשם")}));
}

TEST_F(VolumeWindowTest, TheTipTellsPathAndReasonAndOverTheSliderThePercentOrWhyItCannotBeMoved) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(1, "player", "/opt/<b>\n/player");
    ASSERT_TRUE(showsRows({QStringLiteral("player")}));
    const RowProbe row(window_, QStringLiteral("player"));
    EXPECT_EQ(row.item->tipAt({}), QStringLiteral("player\n/opt/<b> /player"));
    const QPoint overSlider = row.slider->geometry().center();
    EXPECT_EQ(row.item->tipAt(overSlider), QStringLiteral("100 %"));
    model_.controller.notControllable(1, QStringLiteral("It plays <past> the mixer"));
    EXPECT_EQ(row.item->tipAt(overSlider), QStringLiteral("It plays <past> the mixer"));
    model_.workspace.setReason(QStringLiteral("player"), QStringLiteral("For a <reason>."));
    EXPECT_EQ(row.item->tipAt({}), QStringLiteral("player\n/opt/<b> /player\nFor a <reason>.\n"
                                                  "It plays <past> the mixer"));
}

TEST_F(VolumeWindowTest, AnItemCanGoByItsOwnMenu) {
    model_.workspace.setRunningApplications(
        {{1, QStringLiteral("b"), {}}, {2, QStringLiteral("d"), {}}});
    MVCollectionViewItem& item = *RowProbe(window_, QStringLiteral("b")).item;
    QContextMenuEvent event(QContextMenuEvent::Mouse, {}, item.mapToGlobal(QPoint()));
    QApplication::sendEvent(&item, &event);
    QWidget* const menu = QApplication::activePopupWidget();
    ASSERT_NE(menu, nullptr);
    QTest::mouseMove(menu, menu->rect().center());
    QTest::mouseClick(menu, Qt::LeftButton, {}, menu->rect().center());
    EXPECT_TRUE(showsRows({QStringLiteral("d")}));
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
    model_.controller.showProblem(QStringLiteral("why"));
    EXPECT_EQ(support::notice(window_), QStringLiteral("why"));
}

TEST_F(VolumeWindowTest, SaysThatNothingPlaysWhenThereAreOnlyTheSoundEffects) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(1, "coreaudiod");
    ASSERT_TRUE(showsRows({QStringLiteral("Sound Effects")}));
    EXPECT_TRUE(support::notice(window_).contains(QStringLiteral("when it plays")));
}

TEST_F(VolumeWindowTest, TheSoundEffectsAreIgnoredByTheNameThatIsShown) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(1, "coreaudiod");
    const QString shown = QStringLiteral("Sound Effects");
    ASSERT_TRUE(showsRows({shown}));
    RowProbe(window_, shown).item->ignore();
    EXPECT_TRUE(showsRows({}));
    EXPECT_EQ(window_.findChild<UndoNotice*>()->findChild<QLabel*>()->text(),
              QStringLiteral("\"Sound Effects\" is ignored from now on."));
    EXPECT_EQ(window_.history().undoText(), QStringLiteral("Ignore \"Sound Effects\""));
    window_.history().undo();
    EXPECT_TRUE(showsRows({shown}));
}

TEST_F(VolumeWindowTest, KeysAreGesturesInWholePercents) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    const RowProbe row = connected(plugin);
    const auto pressed = [&](QWidget* part, Qt::Key key) {
        part->setFocus();
        QTest::keyClick(part, key);
        return received(plugin);
    };
    EXPECT_EQ(pressed(row.slider, Qt::Key_Home), "9,4711,0 ");
    EXPECT_EQ(pressed(row.slider, Qt::Key_PageUp), "9,4711,10 ");
    EXPECT_EQ(pressed(row.slider, Qt::Key_Left), "9,4711,9 ");
    EXPECT_EQ(pressed(row.slider, Qt::Key_Right), "9,4711,10 ");
    EXPECT_EQ(pressed(row.slider, Qt::Key_End), "9,4711,100 ");
    EXPECT_EQ(pressed(row.mute, Qt::Key_Space), "10,4711,1 ");
    EXPECT_EQ(pressed(row.mute, Qt::Key_Space), "10,4711,0 ");
}

TEST_F(VolumeWindowTest, LevelsAreShownUntilTheyEnd) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    const RowProbe row = connected(plugin);
    plugin.reportLevel(4711, 0.5F);
    EXPECT_TRUE(support::waitUntil([&] { return row.level() == 50; }));
    EXPECT_TRUE(support::waitUntil([&] { return row.level() == 0; })) << "silence again";
}

TEST_F(VolumeWindowTest, WhatIsSetElsewhereMovesTheControlsButNotAHeldSlider) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    const RowProbe row = connected(plugin);
    MVCommAppValue& app = *model_.controller.apps()[0];
    const auto shown = [&] {
        return VolumeNumbers::percentOfFraction(static_cast<double>(row.slider->floatValue()));
    };
    model_.controller.changedElsewhere(4711, 37, true);
    EXPECT_EQ(shown(), 37);
    EXPECT_TRUE(row.slider->isMuted());

    const QPoint middle(row.slider->width() / 2, 10);
    QTest::mousePress(row.slider, Qt::LeftButton, {}, middle);
    EXPECT_EQ(shown(), 50);
    model_.controller.changedElsewhere(4711, 20, false);
    model_.controller.update();
    EXPECT_EQ(shown(), 50);
    EXPECT_FALSE(row.slider->isMuted());
    QTest::mouseRelease(row.slider, Qt::LeftButton, {}, middle);
    EXPECT_EQ(model_.controller.percentOf(app), 50) << "the last word";
    EXPECT_EQ(received(plugin).substr(0, 10), "9,4711,50 ") << "none for what was done elsewhere";
}

TEST_F(VolumeWindowTest, WhatIsSetByTheModelIsSentOnce) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    const RowProbe row = connected(plugin);
    MVCommAppValue& app = *model_.controller.apps()[0];
    model_.controller.setPercent(app, 30);
    model_.controller.setMuted(app, true);
    EXPECT_TRUE(row.slider->isMuted());
    model_.controller.setPercent(app, 31);
    std::string all;
    EXPECT_TRUE(support::waitUntil([&] { return (all += received(plugin)).ends_with("31 "); }));
    EXPECT_EQ(all, "9,4711,30 10,4711,1 9,4711,31 ");
}

TEST_F(VolumeWindowTest, ASliderThatCannotBeMovedLetsGoOfTheMouse) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    const RowProbe row = connected(plugin);
    QTest::mousePress(row.slider, Qt::LeftButton, {}, row.slider->rect().center());
    model_.controller.notControllable(4711, QStringLiteral("It plays past the mixer"));
    EXPECT_FALSE(row.slider->isEnabled());
    EXPECT_FALSE(row.slider->isInDrag());
    model_.controller.notControllable(4711, QString());
    EXPECT_TRUE(row.slider->isEnabled());
}

TEST_F(VolumeWindowTest, RowsLieInTheOrderOfTheRecordsAndStayTheSameOnes) {
    model_.workspace.setRunningApplications(
        {{1, QStringLiteral("b"), {}}, {2, QStringLiteral("d"), {}}});
    const RowProbe before(window_, QStringLiteral("d"));
    before.slideTo(30);
    model_.workspace.setRunningApplications(
        {{2, QStringLiteral("d"), {}}, {3, QStringLiteral("C"), {}}, {4, QStringLiteral("e"), {}}});
    ASSERT_TRUE(showsRows({QStringLiteral("C"), QStringLiteral("d"), QStringLiteral("e")}));
    EXPECT_EQ(RowProbe(window_, QStringLiteral("d")).item, before.item);
    EXPECT_EQ(before.slider->floatValue(), 0.3F);
    EXPECT_EQ(RowProbe(window_, QStringLiteral("e")).slider->floatValue(), 1.0F);
}

TEST_F(VolumeWindowTest, TheFocusGoesFromItemToItemInTheirOrder) {
    model_.workspace.setRunningApplications(
        {{1, QStringLiteral("b"), {}}, {2, QStringLiteral("d"), {}}});
    model_.workspace.setRunningApplications(
        {{1, QStringLiteral("b"), {}}, {2, QStringLiteral("d"), {}}, {3, QStringLiteral("c"), {}}});
    const RowProbe b(window_, QStringLiteral("b"));
    const RowProbe c(window_, QStringLiteral("c"));
    const RowProbe d(window_, QStringLiteral("d"));
    b.mute->setFocus();
    window_.activateWindow();
    ASSERT_TRUE(support::waitUntil([&] { return b.mute->hasFocus(); }));
    for (QWidget* const next : {static_cast<QWidget*>(b.slider), static_cast<QWidget*>(c.mute),
                                static_cast<QWidget*>(c.slider), static_cast<QWidget*>(d.mute)}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget(), next);
    }
}

TEST_F(VolumeWindowTest, KeepsToItsLimitsAndToAPlaceThatCanBeSeen) {
    const int titleBar = static_cast<int>(window_.titleBarHeight());
    EXPECT_EQ(window_.minimumSize(), QSize(400, 2 * ItemLayout::height + titleBar));
    EXPECT_EQ((window_.height() - titleBar) % ItemLayout::height, 0);
    const QRect desktop = window_.screen()->availableGeometry();
    EXPECT_LE((window_.frame().center() - desktop.center()).manhattanLength(), 4);
    window_.setFrame({10, 20, 500, 280});
    EXPECT_EQ(window_.frame(), QRect(10, 20, 500, 280));
    window_.setFrame({100000, 100000, 600, 336});
    EXPECT_EQ(window_.frame().size(), QSize(600, 336));
    EXPECT_TRUE(desktop.contains(window_.frame())) << "back from where no screen is";
}

TEST_F(VolumeWindowTest, ShowsWholeRowsWhateverHeightItIsGiven) {
    constexpr int row = ItemLayout::height;
    const int titleBar = static_cast<int>(window_.titleBarHeight());
    const auto becomes = [&](int height, int expected) {
        window_.resize(500, titleBar + height);
        return support::waitUntil(
            [&] { return window_.size() == QSize(500, titleBar + expected); });
    };
    EXPECT_TRUE(becomes(5 * row + row / 2 - 1, 5 * row)) << window_.height();
    EXPECT_TRUE(becomes(5 * row + row / 2, 6 * row)) << window_.height();
    EXPECT_TRUE(becomes(5 * row + 1, 5 * row));
    window_.resize(500, titleBar + 5 * row + 2);
    EXPECT_TRUE(becomes(5 * row + 1, 5 * row)) << "nobody has insisted on it";
    EXPECT_TRUE(becomes(40 * row, 30 * row)) << "the most";
    window_.setWindowState(Qt::WindowMaximized);
    EXPECT_TRUE(support::waitUntil([&] { return window_.width() > 500; }));
    EXPECT_EQ(window_.frame().size(), QSize(500, titleBar + 30 * row)) << "to be remembered";
}

TEST_F(VolumeWindowTest, TheSamePullTwiceEndsInWholeRowsTwice) {
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    QWindow* const handle = window_.windowHandle();
    const QSize before = window_.size();
    for (int times = 0; times < 2; ++times) {
        const QPoint edge(before.width() / 2, before.height() - 1);
        QTest::mousePress(handle, Qt::LeftButton, {}, edge);
        QTest::mouseMove(handle, edge + QPoint(0, 7));
        EXPECT_EQ(window_.height(), before.height() + 7);
        QTest::mouseRelease(handle, Qt::LeftButton, {}, edge + QPoint(0, 7));
        EXPECT_EQ(window_.size(), before);
    }
}

TEST_F(VolumeWindowTest, ShowsOneAboutBox) {
    for (int times = 0; times < 2; ++times)
        Q_EMIT window_.menu().aboutWanted();
    ASSERT_EQ(window_.findChildren<QNAboutBox*>().size(), 1);
    auto* const box = window_.findChild<QNAboutBox*>();
    QTest::keyClick(box, Qt::Key_Escape);
    EXPECT_FALSE(box->isVisible());
}

TEST_F(VolumeWindowTest, DrawsNothingWhileMinimisedAndEverythingAfterwards) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    const RowProbe row = connected(plugin);
    window_.showMinimized();
    EXPECT_TRUE(support::waitUntil([&] { return !row.slider->updatesEnabled(); }));
    plugin.reportLevel(4711, 0.5F);
    EXPECT_TRUE(support::waitUntil([&] { return row.level() == 50; })) << "for the log";
    window_.showNormal();
    EXPECT_TRUE(support::waitUntil([&] { return row.slider->updatesEnabled(); }));
}
