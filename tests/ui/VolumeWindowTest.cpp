#include "VolumeWindowFixture.h"

#include "look/window/BarButton.h"
#include "look/window/UndoNotice.h"
#include "ui/KeysSheet.h"
#include "ui/VolumeMenu.h"
#include "ui/items/MVCollectionViewTextField.h"

#include <QAccessible>
#include <QApplication>
#include <QContextMenuEvent>
#include <QLabel>
#include <QScreen>

#include <functional>
#include <vector>

using VolumeWindowTest = VolumeWindowFixture;

TEST_F(VolumeWindowTest, ANameStaysInItsLineWhateverItHolds) {
    model_.workspace.setRunningApplications({{1, "two\nlines\u2028\u0085and \u202egnp.exe <b>", {}},
                                             {2, QString(10000, QLatin1Char('z')), {}}});
    const QStringList names = support::rowNames(window_);
    ASSERT_EQ(names.size(), 2);
    EXPECT_EQ(names[0], "two lines  and gnp.exe <b>");
    EXPECT_LT(names[1].size(), 1000);
    EXPECT_EQ(RowProbe(window_, names[0]).item->tipAt({}), "two lines  and gnp.exe <b>");
}

TEST_F(VolumeWindowTest, AProgramWhoseNameCannotBeSeenIsShownByItsNumber) {
    model_.workspace.setRunningApplications(
        {{12, " \t\n\u00a0\u200b\u202e\u200f", {}}, {34, "\u200fשם", {}}});
    EXPECT_EQ(support::rowNames(window_), (QStringList{"Process 12", "\u200fשם"}));
}

TEST_F(VolumeWindowTest, TheTipTellsPathAndReasonAndOverTheSliderThePercentOrWhyItCannotBeMoved) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(1, "player", "/opt/<b>\n/player");
    ASSERT_TRUE(showsRows({"player"}));
    const RowProbe row(window_, "player");
    EXPECT_EQ(row.item->tipAt({}), "player\n/opt/<b> /player");
    const QPoint overSlider = row.slider->geometry().center();
    EXPECT_EQ(row.item->tipAt(overSlider), "100 %");
    model_.controller.notControllable(1, "It plays <past> the mixer");
    EXPECT_EQ(row.item->tipAt(overSlider), "It plays <past> the mixer");
    model_.workspace.setReason("player", "For a <reason>.");
    EXPECT_EQ(row.item->tipAt({}), "player\n/opt/<b> /player\nFor a <reason>.\n"
                                   "It plays <past> the mixer");
}

TEST_F(VolumeWindowTest, AnItemCanBeRemovedThroughItsOwnMenu) {
    model_.workspace.setRunningApplications({{1, "b", {}}, {2, "d", {}}});
    MVCollectionViewItem& item = *RowProbe(window_, "b").item;
    QContextMenuEvent event(QContextMenuEvent::Mouse, {}, item.mapToGlobal(QPoint()));
    QApplication::sendEvent(&item, &event);
    QWidget* const menu = QApplication::activePopupWidget();
    ASSERT_NE(menu, nullptr);
    QTest::mouseMove(menu, menu->rect().center());
    QTest::mouseClick(menu, Qt::LeftButton, {}, menu->rect().center());
    EXPECT_TRUE(showsRows({"d"}));
}

TEST_F(VolumeWindowTest, ShowsARowForEachProgramAndSaysWhenThereIsNone) {
    EXPECT_EQ(support::notice(window_), "A program appears here when it plays.");
    ScriptedPlugin first(MVCommMainSocketPath());
    first.checkIn(1, "first");
    ASSERT_TRUE(showsRows({"first"}));
    EXPECT_EQ(support::notice(window_), QString());
    {
        ScriptedPlugin second(MVCommMainSocketPath());
        second.checkIn(2, "<b>second</b>");
        const ScriptedPlugin neverChecksIn(MVCommMainSocketPath());
        ASSERT_TRUE(showsRows({"<b>second</b>", "first"}));
    }
    ASSERT_TRUE(showsRows({"first"}));
    first.checkIn(1, "coreaudiod");
    ASSERT_TRUE(showsRows({"Sound Effects"}));
    EXPECT_TRUE(support::notice(window_).startsWith("Nothing else makes sound yet."));
    first.disconnect();
    ASSERT_TRUE(showsRows({}));
    EXPECT_EQ(support::notice(window_), "A program appears here when it plays.");
}

TEST_F(VolumeWindowTest, AProblemTakesThePlaceOfOneRowHoweverLongItsTextsAre) {
    auto* const bar = window_.findChild<ProblemBar*>();
    const auto* const grid = window_.findChild<MVCollectionView*>()->parentWidget();
    window_.resize(400, static_cast<int>(window_.titleBarHeight()) + 2 * ItemLayout::height);
    const QSize whole = window_.size();
    const QString lengthy = QStringLiteral("Donaudampfschifffahrtselektrizitäten ").repeated(9);
    for (const QString& text : {QStringLiteral("Why"), lengthy}) {
        window_.showProblem({text, text, text});
        QCoreApplication::sendPostedEvents(); // it is laid out
        EXPECT_EQ(bar->size(), QSize(398, ItemLayout::height));
        EXPECT_EQ(bar->mapTo(&window_, QPoint()).y(), window_.titleBarHeight() - 1);
        EXPECT_EQ(grid->height(), ItemLayout::height);
        EXPECT_EQ(window_.size(), whole);
        EXPECT_EQ(window_.minimumSize(), whole);
        EXPECT_EQ(support::notice(window_), QString()) << "the bar says it";
        for (const auto* const part : bar->findChildren<QWidget*>())
            EXPECT_TRUE(bar->rect().contains(part->geometry())) << part->geometry().right();
    }
    window_.showProblem({});
    QCoreApplication::sendPostedEvents();
    EXPECT_FALSE(bar->isVisible());
    EXPECT_EQ(grid->height(), 2 * ItemLayout::height);
    EXPECT_NE(support::notice(window_), QString());
}

TEST_F(VolumeWindowTest, TheBarsButtonsComeBeforeTheItemsAndTakeKeys) {
    model_.workspace.setRunningApplications({{1, "b", {}}});
    window_.showProblem({"Why", "Help", "Details"});
    const auto buttons = window_.findChild<ProblemBar*>()->findChildren<BarButton*>();
    ASSERT_EQ(buttons.size(), 2);
    QStringList wanted;
    QObject::connect(&window_, &VolumeWindow::helpWanted, [&] { wanted += "help"; });
    QObject::connect(&window_, &VolumeWindow::detailsWanted, [&] { wanted += "details"; });
    buttons[0]->setFocus();
    window_.activateWindow();
    ASSERT_TRUE(support::waitUntil([&] { return buttons[0]->hasFocus(); }));
    QTest::keyClick(buttons[0], Qt::Key_Return);
    QTest::keyClick(buttons[0], Qt::Key_Tab);
    EXPECT_TRUE(buttons[1]->hasFocus());
    QTest::keyClick(buttons[1], Qt::Key_Space);
    EXPECT_EQ(wanted, (QStringList{"help", "details"}));
    const RowProbe row(window_, "b");
    EXPECT_FALSE(row.mute->hasFocus());
    EXPECT_FALSE(model_.controller.apps()[0]->muted()) << "Space was for the button";
    QTest::keyClick(buttons[1], Qt::Key_Tab);
    EXPECT_TRUE(row.mute->hasFocus());
}

TEST_F(VolumeWindowTest, TheSoundEffectsAreIgnoredByTheNameThatIsShown) {
    ScriptedPlugin plugin(MVCommMainSocketPath());
    plugin.checkIn(1, "coreaudiod");
    const QString shown = "Sound Effects";
    ASSERT_TRUE(showsRows({shown}));
    RowProbe(window_, shown).item->ignore();
    EXPECT_TRUE(showsRows({}));
    EXPECT_EQ(window_.findChild<UndoNotice*>()->findChild<QLabel*>()->text(),
              "\"Sound Effects\" is ignored from now on.");
    EXPECT_EQ(window_.history().undoText(), "Ignore \"Sound Effects\"");
    window_.history().undo();
    EXPECT_TRUE(showsRows({shown}));
}

TEST_F(VolumeWindowTest, WhatIsSetElsewhereMovesTheControlsButNotAHeldSlider) {
    const RowProbe row = connected();
    MVCommAppValue& app = *model_.controller.apps()[0];
    const auto shown = [&] {
        return VolumeConversion::percentOfFraction(static_cast<double>(row.slider->floatValue()));
    };
    model_.controller.changedElsewhere(4711, {37, true});
    EXPECT_EQ(shown(), 37);
    EXPECT_TRUE(row.slider->isMuted());

    const QPoint middle(row.slider->width() / 2, 10);
    QTest::mousePress(row.slider, Qt::LeftButton, {}, middle);
    EXPECT_EQ(shown(), 50);
    model_.controller.changedElsewhere(4711, {20, false});
    model_.controller.update();
    EXPECT_EQ(shown(), 50);
    EXPECT_FALSE(row.slider->isMuted());
    QTest::mouseRelease(row.slider, Qt::LeftButton, {}, middle);
    EXPECT_EQ(model_.controller.percentOf(app), 50) << "the last word";
    EXPECT_TRUE(sentUntil("9,4711,50 ").starts_with("9,4711,50 ")) << "nothing else before";
}

TEST_F(VolumeWindowTest, ASliderThatCannotBeMovedLetsGoOfTheMouse) {
    const RowProbe row = connected();
    QTest::mousePress(row.slider, Qt::LeftButton, {}, row.slider->rect().center());
    model_.controller.notControllable(4711, "It plays past the mixer");
    EXPECT_FALSE(row.slider->isEnabled());
    EXPECT_FALSE(row.slider->isInDrag());
    model_.controller.notControllable(4711, QString());
    EXPECT_TRUE(row.slider->isEnabled());
}

TEST_F(VolumeWindowTest, AProgramThatCannotBeControlledCanOnlyBeUnmutedInMemory) {
    const RowProbe row = connected();
    const MVCommAppValue& app = *model_.controller.apps()[0];
    QAccessibleInterface& button = *QAccessible::queryAccessibleInterface(row.mute);
    const auto press = [&] {
        button.actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    };
    row.slideTo(30);
    press();
    window_.history().undo();
    window_.history().undo();
    model_.controller.notControllable(4711, "It plays past the mixer");
    EXPECT_TRUE(button.state().disabled);
    EXPECT_EQ(button.text(QAccessible::Description), "It plays past the mixer");
    EXPECT_EQ(row.item->tipAt(row.mute->geometry().center()), "It plays past the mixer");
    const std::vector<std::function<void()>> ways{
        press,
        [&] { QTest::mouseClick(row.mute, Qt::LeftButton); },
        [&] { QTest::keyClick(row.mute, Qt::Key_Select); },
        [&] { QTest::keyClick(row.mute, Qt::Key_Space); },
        [&] { window_.history().redo(); }, // of the volume
        [&] { window_.history().redo(); },
    };
    row.mute->setFocus(Qt::TabFocusReason);
    for (std::size_t way = 0; way < ways.size(); ++way) {
        ways[way]();
        EXPECT_FALSE(app.muted()) << way;
        EXPECT_EQ(row.slider->floatValue(), 1.0F) << way;
    }
    for (std::size_t way = 0; way < 4; ++way) {
        model_.controller.changedElsewhere(4711, {100, true});
        EXPECT_FALSE(button.state().disabled) << way;
        ways[way]();
        EXPECT_FALSE(app.muted()) << way;
        EXPECT_FALSE(model_.defaults.dictionary("Apps").contains("player")) << way;
    }
}

TEST_F(VolumeWindowTest, RowsLieInTheOrderOfTheRecordsAndStayTheSameOnes) {
    model_.workspace.setRunningApplications({{1, "b", {}}, {2, "d", {}}});
    const RowProbe before(window_, "d");
    before.slideTo(30);
    model_.workspace.setRunningApplications({{2, "d", {}}, {3, "C", {}}, {4, "e", {}}});
    ASSERT_TRUE(showsRows({"C", "d", "e"}));
    EXPECT_EQ(RowProbe(window_, "d").item, before.item);
    EXPECT_EQ(before.slider->floatValue(), 0.3F);
    EXPECT_EQ(RowProbe(window_, "e").slider->floatValue(), 1.0F);
}

TEST_F(VolumeWindowTest, TheFocusGoesFromItemToItemInTheirOrder) {
    model_.workspace.setRunningApplications({{1, "b", {}}, {2, "d", {}}});
    model_.workspace.setRunningApplications({{1, "b", {}}, {2, "d", {}}, {3, "c", {}}});
    const RowProbe b(window_, "b");
    const RowProbe c(window_, "c");
    const RowProbe d(window_, "d");
    b.mute->setFocus();
    window_.activateWindow();
    ASSERT_TRUE(support::waitUntil([&] { return b.mute->hasFocus(); }));
    for (QWidget* const next : {static_cast<QWidget*>(b.slider), static_cast<QWidget*>(c.mute),
                                static_cast<QWidget*>(c.slider), static_cast<QWidget*>(d.mute)}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget(), next);
    }
}

TEST_F(VolumeWindowTest, IsInTheMiddleAndShowsWholeRowsWhateverHeightItIsGiven) {
    constexpr int row = ItemLayout::height;
    const int titleBar = static_cast<int>(window_.titleBarHeight());
    const QRect desktop = window_.screen()->availableGeometry();
    EXPECT_LE((window_.frame().center() - desktop.center()).manhattanLength(), 4);
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
    window_.resize(0, 0);
    EXPECT_EQ(window_.size(), QSize(400, titleBar + 2 * row)) << "the least";
    window_.resize(500, titleBar + 30 * row);
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

TEST_F(VolumeWindowTest, ListsItsKeysInOneSheetThatEscapeCloses) {
    for (int times = 0; times < 2; ++times)
        Q_EMIT window_.menu().keysWanted();
    ASSERT_EQ(window_.findChildren<KeysSheet*>().size(), 1);
    auto* const sheet = window_.findChild<KeysSheet*>();
    QStringList texts;
    for (const QLabel* const label : sheet->findChildren<QLabel*>())
        texts += label->text();
    for (const char* const each : {"Ctrl+Q", "Quit", "Ctrl+Z", "Undo", "Space", "Mute or unmute"})
        EXPECT_TRUE(texts.contains(each)) << each;
    EXPECT_FALSE(texts.contains("Recommend")) << "there is no page";
    QTest::keyClick(sheet, Qt::Key_Escape);
    EXPECT_FALSE(sheet->isVisible());
}

TEST_F(VolumeWindowTest, DrawsNothingWhileMinimisedAndEverythingAfterwards) {
    const RowProbe row = connected();
    window_.showMinimized();
    EXPECT_TRUE(support::waitUntil([&] { return !row.slider->updatesEnabled(); }));
    plugin_->reportLevel(4711, 0.5F);
    EXPECT_TRUE(support::waitUntil([&] { return row.level() == 50; })) << "for the log";
    EXPECT_TRUE(support::waitUntil([&] { return row.level() == 0; })) << "silence again";
    window_.showNormal();
    EXPECT_TRUE(support::waitUntil([&] { return row.slider->updatesEnabled(); }));
}
