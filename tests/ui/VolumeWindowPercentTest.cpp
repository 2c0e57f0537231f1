#include "VolumeWindowFixture.h"

#include "look/window/QNToolTip.h"
#include "platform/window/WindowFront.h"
#include "ui/VolumeMenu.h"
#include "ui/items/ItemStatus.h"
#include "ui/items/MVCollectionViewImageView.h"
#include "ui/items/MVCollectionViewTextField.h"
#include "ui/items/PercentField.h"

#include <QAccessible>
#include <QApplication>
#include <QMenu>

// Typing a volume, resetting it, and choosing a row, as events of mouse and keyboard.
namespace {

class VolumeWindowPercentTest : public VolumeWindowFixture {
  protected:
    VolumeWindowPercentTest() {
        model_.workspace.setRunningApplications({{1, "4 players", {}}, {2, "b program", {}}});
        window_.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
    }

    RowProbe row() const { return {window_, "b program"}; }
    PercentField* field() const { return row().item->percentField(); }
    int percent() const { return row().slider->percent(); }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(window_.focusWidget(), key, modifiers);
    }

    void clickPercent() {
        ItemStatus& status = row().item->status();
        QTest::mouseClick(&status, Qt::LeftButton, {}, status.percentPlace().center());
    }

    /// Into the field that a click opens.
    void type(const char* text, Qt::Key end) {
        clickPercent();
        ASSERT_NE(field(), nullptr);
        EXPECT_TRUE(field()->hasFocus());
        QTest::keyClicks(field(), QString::fromUtf8(text));
        QTest::keyClick(field(), end);
    }

    bool isCurrent() const { return row().item->isCurrent(); }
};

} // namespace

TEST_F(VolumeWindowPercentTest, AClickOnThePercentOpensAFieldThatTakesVolumesStepsAndMute) {
    const struct {
        const char* text;
        int percent;
    } steps[] = {{"40", 40}, {"+5", 45}, {"-10 %", 35}, {"-99", 0}, {"+100", 100}, {"70%", 70}};
    for (const auto& [text, expected] : steps) {
        type(text, Qt::Key_Return);
        EXPECT_EQ(field(), nullptr);
        EXPECT_EQ(percent(), expected) << text;
        EXPECT_EQ(row().item->status().state().percent, expected);
        EXPECT_EQ(model_.controller.percentOf(*row().item->representedObject()), expected);
        EXPECT_TRUE(row().slider->hasFocus());
    }
    for (const bool isMuted : {true, false}) {
        type(isMuted ? "mute" : "unmute", Qt::Key_Enter);
        EXPECT_EQ(row().item->representedObject()->muted(), isMuted);
    }
    type("12", Qt::Key_Escape);
    EXPECT_EQ(percent(), 70);
    EXPECT_EQ(field(), nullptr);
    type("12", Qt::Key_Tab);
    EXPECT_EQ(percent(), 70) << "only Enter sets";
    EXPECT_TRUE(support::waitUntil([&] { return window_.history().canUndo(); }));
    window_.history().undo();
    EXPECT_FALSE(window_.history().undoText().isEmpty());
}

TEST_F(VolumeWindowPercentTest, WhatMeansNothingStaysAndIsExplained) {
    type("loud", Qt::Key_Return);
    ASSERT_NE(field(), nullptr);
    EXPECT_EQ(field()->selectedText(), "loud");
    EXPECT_TRUE(QNToolTip::shared().isVisible());
    EXPECT_EQ(QNToolTip::shared().text(), "Type 0 to 100, a step such as +5, or “mute”.");
    QTest::keyClicks(field(), "101\r");
    ASSERT_NE(field(), nullptr);
    QTest::keyClicks(field(), "33\r");
    EXPECT_EQ(percent(), 33);
}

TEST_F(VolumeWindowPercentTest, F2OpensTheFieldOfTheCurrentRowAndDigitsStayTypeAhead) {
    press(Qt::Key_F2);
    EXPECT_EQ(field(), nullptr) << "there is no current row";
    press(Qt::Key_4);
    EXPECT_TRUE(RowProbe(window_, "4 players").item->isCurrent());
    press(Qt::Key_Down);
    EXPECT_TRUE(isCurrent());
    press(Qt::Key_F2);
    ASSERT_NE(field(), nullptr);
    EXPECT_EQ(field()->selectedText(), "100");
    EXPECT_TRUE(isCurrent());
    QTest::keyClicks(field(), "5\r");
    EXPECT_EQ(percent(), 5);
    const auto change = model_.controller.lastChange(*row().item->representedObject());
    EXPECT_EQ(change->source, ChangeSource::Kind::window);
    press(Qt::Key_F2);
    model_.workspace.setRunningApplications({{1, "4 players", {}}});
    EXPECT_EQ(support::rowNames(window_).size(), 1) << "the row goes, and its field";
}

TEST_F(VolumeWindowPercentTest, WhatCannotBeControlledOpensNoField) {
    model_.controller.notControllable(2, "It plays past the mixer");
    clickPercent();
    row().mute->setFocus(Qt::TabFocusReason);
    press(Qt::Key_F2);
    EXPECT_EQ(field(), nullptr);
    press(Qt::Key_0, Qt::ControlModifier);
    EXPECT_EQ(percent(), 100);
}

TEST_F(VolumeWindowPercentTest, AssistiveToolsGetThePercentOnceAndTheFieldWhileItIsThere) {
    QAccessibleInterface& item = *QAccessible::queryAccessibleInterface(row().item);
    row().slideTo(40);
    int told = 0;
    for (int index = 0; index < item.childCount(); ++index) {
        for (const auto kind : {QAccessible::Name, QAccessible::Value, QAccessible::Description})
            told += item.child(index)->text(kind).contains("40") ? 1 : 0;
    }
    EXPECT_EQ(told, 1);
    const int usual = item.childCount();
    clickPercent();
    ASSERT_EQ(item.childCount(), usual + 1);
    EXPECT_EQ(item.child(usual)->role(), QAccessible::EditableText);
    EXPECT_EQ(item.child(usual)->text(QAccessible::Name), "Volume");
}

TEST_F(VolumeWindowPercentTest, AClickOnIconOrNameChoosesTheRowForTheMenu) {
    const auto ignoreEntry = [this] {
        press(Qt::Key_Menu);
        auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (menu == nullptr)
            return QString();
        QString text = menu->actions()[0]->text();
        menu->close();
        return text;
    };
    const RowProbe other(window_, "4 players");
    for (QWidget* const part : {static_cast<QWidget*>(&row().item->iconView()),
                                static_cast<QWidget*>(&row().item->label())}) {
        QTest::mouseClick(&other.item->label(), Qt::LeftButton);
        EXPECT_FALSE(isCurrent());
        QTest::mouseClick(part, Qt::LeftButton);
        EXPECT_TRUE(isCurrent());
        EXPECT_FALSE(other.item->isCurrent());
        EXPECT_EQ(ignoreEntry(), "Ignore \"b program\"");
    }
}

TEST_F(VolumeWindowPercentTest, CtrlZeroAndTheItemsMenuResetTheVolume) {
    row().slideTo(30);
    QTest::mouseClick(&row().item->label(), Qt::LeftButton);
    press(Qt::Key_0, Qt::ControlModifier);
    EXPECT_EQ(percent(), 100);
    EXPECT_EQ(model_.controller.lastChange(*row().item->representedObject())->source,
              ChangeSource::Kind::key);
    EXPECT_EQ(window_.history().undoText(), "Volume of \"b program\"");
    row().slideTo(30);
    QMenu* const menu = row().item->makeContextMenu(&window_);
    ASSERT_EQ(menu->actions().size(), 2);
    EXPECT_TRUE(menu->actions()[1]->isEnabled());
    menu->actions()[1]->trigger();
    EXPECT_EQ(percent(), 100);
}

TEST_F(VolumeWindowPercentTest, ZoomFitsTheProgramsAndGoesBack) {
    const int titleBar = static_cast<int>(window_.titleBarHeight());
    window_.resize(500, titleBar + 5 * ItemLayout::height);
    Q_EMIT window_.menu().zoomWanted();
    EXPECT_EQ(window_.size(), QSize(500, titleBar + 2 * ItemLayout::height));
    Q_EMIT window_.menu().zoomWanted();
    EXPECT_EQ(window_.size(), QSize(500, titleBar + 5 * ItemLayout::height));
    window_.showMaximized();
    Q_EMIT window_.menu().zoomWanted();
    EXPECT_FALSE(window_.isMaximized());
    EXPECT_EQ(window_.size(), QSize(500, titleBar + 5 * ItemLayout::height));
}

TEST_F(VolumeWindowPercentTest, AMaximisedWindowIsRememberedUnderAKeyOfItsOwn) {
    window_.setFrame({10, 10, 500, window_.height()});
    const QRect frame = window_.frame();
    window_.showMaximized();
    model_.controller.shutdown();
    EXPECT_TRUE(model_.defaults.boolean("MainWindowMaximized"));
    window_.showNormal();
    model_.controller.setView(&window_);
    EXPECT_TRUE(window_.isMaximized());
    EXPECT_EQ(window_.frame(), frame);
    window_.setWindowState(Qt::WindowMaximized | Qt::WindowMinimized);
    platform::bringToFront(window_);
    EXPECT_TRUE(window_.isMaximized() && !window_.isMinimized());
    window_.showNormal();
    model_.controller.shutdown();
    EXPECT_FALSE(model_.defaults.value("MainWindowMaximized").isValid());
}
