#include "VolumeWindowFixture.h"

#include "look/window/UndoNotice.h"
#include "platform/bus/NotificationCenter.h"
#include "support/ManualClock.h"
#include "ui/KeysSheet.h"
#include "ui/VolumeMenu.h"
#include "ui/input/VolumeScrollView.h"
#include "ui/items/MVCollectionViewTextField.h"

#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QWheelEvent>

#include <chrono>
#include <optional>

using namespace std::chrono_literals;

// User actions in the window, as toolkit events.
namespace {

class VolumeWindowInputTest : public VolumeWindowFixture {
  protected:
    void showPrograms(int count) {
        clock_.emplace();
        QList<RunningApplication> programs;
        for (int number = 1; number <= count; ++number)
            programs.push_back({static_cast<std::uint32_t>(number),
                                QStringLiteral("%1 program").arg(QChar('a' + number - 1)),
                                {}});
        model_.workspace.setRunningApplications(programs);
        window_.resize(450, 2 * ItemLayout::height + static_cast<int>(window_.titleBarHeight()));
        window_.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window_));
        row('a').slider->setFocus(Qt::TabFocusReason);
    }

    RowProbe row(char letter) const {
        return {window_, QStringLiteral("%1 program").arg(QLatin1Char(letter))};
    }

    /// Of the widget that has the focus, else of the window.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QWidget* const focused = window_.focusWidget();
        QTest::keyClick(focused != nullptr ? focused : &window_, key, modifiers);
    }

    /// As a key does that is held.
    void repeat(Qt::Key key, const QString& text) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text, true);
        QApplication::sendEvent(window_.focusWidget(), &event);
    }

    void turnWheel(QWidget* over, int angle, int pixels = 0) {
        const QPoint place = over->mapTo(&window_, over->rect().center());
        QWheelEvent event(place, window_.mapToGlobal(place), {0, pixels}, {0, angle}, Qt::NoButton,
                          {}, Qt::NoScrollPhase, false);
        QSpontaneKeyEvent::setSpontaneous(&event); // which sendEvent() would undo
        qApp->notify(window_.windowHandle(), &event);
    }

    int scrolled() const {
        for (const QScrollBar* const bar : window_.findChildren<QScrollBar*>()) {
            if (bar->orientation() == Qt::Vertical)
                return bar->value();
        }
        return -1;
    }

    int percent(char letter) const { return row(letter).slider->percent(); }
    bool isMuted(char letter) const { return row(letter).item->representedObject()->muted(); }
    bool hasFocus(const QWidget* part) const { return window_.focusWidget() == part; }

    std::optional<support::ManualClock> clock_; // from then on
};

} // namespace

TEST_F(VolumeWindowInputTest, ArrowsGoFromItemToItemAndTheSliderHasTheOthers) {
    showPrograms(4);
    EXPECT_TRUE(hasFocus(row('a').slider));
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_TRUE(hasFocus(row('c').slider));
    EXPECT_EQ(scrolled(), ItemLayout::height) << "it is brought into view";
    press(Qt::Key_Left);
    press(Qt::Key_PageDown);
    EXPECT_EQ(percent('c'), 89);
    press(Qt::Key_Home);
    EXPECT_EQ(percent('c'), 0);
    press(Qt::Key_End);
    EXPECT_EQ(percent('c'), 100);
    press(Qt::Key_Up);
    EXPECT_TRUE(hasFocus(row('b').slider));
    press(Qt::Key_Backtab);
    EXPECT_TRUE(hasFocus(row('b').mute));
    press(Qt::Key_Down);
    EXPECT_TRUE(hasFocus(row('c').mute)) << "the same part";
    press(Qt::Key_End);
    EXPECT_TRUE(hasFocus(row('d').mute));
}

TEST_F(VolumeWindowInputTest, SpaceMutesAndTypingFindsAProgram) {
    showPrograms(3);
    press(Qt::Key_C);
    EXPECT_TRUE(hasFocus(row('c').slider));
    press(Qt::Key_Space);
    EXPECT_FALSE(isMuted('c')) << "part of a name that is being typed";
    clock_->advance(TypeAhead::pause);
    press(Qt::Key_Space);
    EXPECT_TRUE(isMuted('c'));
    repeat(Qt::Key_Space, " ");
    EXPECT_TRUE(isMuted('c')) << "it has been toggled once";
    press(Qt::Key_Space);
    EXPECT_FALSE(isMuted('c')) << "and nothing has been typed";

    row('a').mute->setFocus(Qt::TabFocusReason);
    for (const Qt::Key key : {Qt::Key_B, Qt::Key_Space, Qt::Key_P})
        press(key);
    EXPECT_TRUE(hasFocus(row('b').mute));
    EXPECT_FALSE(isMuted('b')) << "on the mute button, too";
    clock_->advance(TypeAhead::pause);
    press(Qt::Key_Space);
    EXPECT_TRUE(isMuted('b'));
}

TEST_F(VolumeWindowInputTest, DeleteIgnoresAndThereIsAWayBack) {
    showPrograms(3);
    press(Qt::Key_Down);
    press(Qt::Key_Delete);
    EXPECT_EQ(support::rowNames(window_), (QStringList{"a program", "c program"}));
    EXPECT_TRUE(hasFocus(row('c').slider)) << "the keys stay in the list";
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(support::rowNames(window_).size(), 3);
    press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(support::rowNames(window_).size(), 2);
    press(Qt::Key_Delete);
    EXPECT_EQ(support::rowNames(window_), QStringList{"a program"});
    auto* const undo = window_.findChild<UndoNotice*>()->findChild<QPushButton*>();
    ASSERT_TRUE(undo->isVisible());
    QTest::mouseClick(undo, Qt::LeftButton);
    EXPECT_EQ(support::rowNames(window_).size(), 2);
    EXPECT_FALSE(undo->isVisible());
}

TEST_F(VolumeWindowInputTest, TheMenuKeyOpensTheMenuOfTheItem) {
    showPrograms(2);
    for (const auto& [key, modifiers] :
         {std::pair(Qt::Key_Menu, Qt::NoModifier), std::pair(Qt::Key_F10, Qt::ShiftModifier)}) {
        press(key, modifiers);
        auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        EXPECT_EQ(menu->actions()[0]->text(), "Ignore \"a program\"");
        menu->close();
    }
}

TEST_F(VolumeWindowInputTest, TheMenuIsFlatAndEveryEntryHasAKeyThatWorks) {
    showPrograms(1);
    VolumeMenu& menu = window_.menu();
    menu.setCanRecommend(true);
    menu.setCloses(true);
    press(Qt::Key_F10);
    EXPECT_EQ(QApplication::activePopupWidget(), &menu);
    menu.close();
    QStringList titles;
    for (QAction* const entry : menu.actions()) {
        EXPECT_EQ(entry->menu(), nullptr);
        if (!entry->isVisible() || entry->isSeparator())
            continue;
        titles += entry->text().remove('&');
        ASSERT_FALSE(entry->shortcut().isEmpty()) << entry->text().toStdString();
        int triggered = 0;
        const auto counting =
            QObject::connect(entry, &QAction::triggered, [&triggered] { ++triggered; });
        if (entry->text() != "Close &Window") {
            const QKeyCombination key = entry->shortcut()[0];
            press(key.key(), key.keyboardModifiers());
            EXPECT_EQ(triggered, 1) << entry->text().toStdString();
        }
        QObject::disconnect(counting);
        for (QWidget* const sheet : window_.findChildren<KeysSheet*>())
            delete sheet;
    }
    EXPECT_EQ(titles, (QStringList{"Preferences…", "Ignored Programs…", "More Contrast", "Log",
                                   "Support Information…", "Keys", "Recommend…", "Uninstall…",
                                   "About", "Close Window", "Quit"}));
    menu.setCloses(false);
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window_.isVisible()) << "also while it is not in the menu";
}

TEST_F(VolumeWindowInputTest, EveryKindOfChangeCanBeUndone) {
    const RowProbe player = connected();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&window_));
    clock_.emplace();
    player.slider->setFocus();
    int releases = 0;
    const platform::NotificationObserver counter(MVVolumeSlider::didReleaseMouseNotification,
                                                 [&](const QVariant&) { ++releases; });
    // Servers drop what has just been sent already, by the same clock, when they come to it.
    const auto settle = [&](const std::string& sent, int expectedReleases) {
        EXPECT_EQ(sentUntil(sent), sent);
        EXPECT_TRUE(support::waitUntil([&] { return releases == expectedReleases; }));
        clock_->advance(2s);
    };
    press(Qt::Key_Home);
    settle("9,4711,0 ", 1);
    turnWheel(player.slider, 240);
    turnWheel(player.mute, 120); // which lets go of the slider
    settle("9,4711,10 ", 2);
    model_.controller.setPercent(*model_.controller.apps()[0], 70); // as another program asks
    press(Qt::Key_Space);
    EXPECT_EQ(sentUntil("10,4711,1 "), "9,4711,70 10,4711,1 ");
    for (int times = 0; times < 5; ++times)
        press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(sentUntil("9,4711,100 "), "10,4711,0 9,4711,10 9,4711,0 9,4711,100 ");
    model_.controller.changedElsewhere(4711, {50, true});
    EXPECT_FALSE(window_.history().canUndo()) << "nobody did that here";
    press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(player.slider->percent(), 0);
}

TEST_F(VolumeWindowInputTest, TheWheelScrollsAndMovesASliderOnlyWhenThatIsMeant) {
    showPrograms(6);
    turnWheel(row('a').slider, 120);
    EXPECT_EQ(percent('a'), 100) << "there is nothing above";
    turnWheel(row('a').slider, -120);
    EXPECT_EQ(percent('a'), 95);
    EXPECT_EQ(scrolled(), 0);
    turnWheel(&row('a').item->label(), -120);
    EXPECT_EQ(scrolled(), ItemLayout::height) << "a row";
    turnWheel(row('c').slider, -120);
    EXPECT_EQ(scrolled(), 2 * ItemLayout::height) << "what has begun as a scroll";
    EXPECT_EQ(percent('c'), 100);
    clock_->advance(WheelPolicy::pause);
    turnWheel(row('c').slider, -240);
    EXPECT_EQ(percent('c'), 90);
    turnWheel(row('c').mute, 40, 7);
    EXPECT_EQ(scrolled(), 2 * ItemLayout::height - 7) << "smoothly";
    EXPECT_TRUE(support::waitUntil([&] { return window_.history().canUndo(); }));
    window_.history().undo();
    EXPECT_EQ(percent('c'), 100);
}

TEST_F(VolumeWindowInputTest, ASliderThatCannotBeMovedScrolls) {
    showPrograms(6);
    model_.controller.notControllable(1, "why");
    turnWheel(row('a').slider, -120);
    EXPECT_EQ(scrolled(), ItemLayout::height);
    EXPECT_EQ(percent('a'), 100);
}
