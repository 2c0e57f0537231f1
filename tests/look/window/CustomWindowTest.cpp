#include "look/window/MVCustomWindow.h"

#include "look/window/MVCustomWindowTitleView.h"
#include "look/window/QNAboutBox.h"
#include "look/window/QNAboutController.h"
#include "look/window/WindowButton.h"
#include "platform/loop/RunLoop.h"
#include "support/WaitUntil.h"

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QScreen>
#include <QTest>

#include <algorithm>

#include <gtest/gtest.h>

using platform::TitleBarSettings;
using Button = TitleBarSettings::Button;

namespace {

/// Counts how often something is drawn.
class PaintCounter : public QObject {
  public:
    explicit PaintCounter(QObject* painted) { painted->installEventFilter(this); }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        paints += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

    int paints = 0;
};

/// A window of 500 x 300 at 200, 100, where nothing but the toolkit manages windows.
class CustomWindowTest : public testing::Test {
  protected:
    CustomWindowTest() {
        window_.setMinimumSize(400, 200);
        window_.setGeometry(200, 100, 500, 300);
        window_.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window_));
    }

    void drag(const QPoint& from, const QPoint& way) {
        QWindow* const handle = window_.windowHandle();
        // Places in the window change with it, those on the desktop do not.
        const QPoint start = window_.geometry().topLeft() + from;
        QTest::mousePress(handle, Qt::LeftButton, {}, from);
        for (int step = 1; step <= 2; ++step)
            QTest::mouseMove(handle, start + way * step / 2 - window_.geometry().topLeft());
        QTest::mouseRelease(handle, Qt::LeftButton, {}, start + way - window_.geometry().topLeft());
    }

    void clickTitle(Qt::MouseButton button) {
        QTest::mouseClick(&window_.titleView(), button, {}, window_.titleView().rect().center());
    }

    void doubleClickTitle() {
        QTest::mouseDClick(&window_.titleView(), Qt::LeftButton, {},
                           window_.titleView().rect().center());
    }

    QRect place() const { return window_.geometry(); }

    MVCustomWindow window_{new QWidget};
};

} // namespace

TEST_F(CustomWindowTest, TheContentLiesBelowTheTitleBar) {
    EXPECT_EQ(window_.contentView().height() + static_cast<int>(window_.titleBarHeight()),
              window_.height());
    EXPECT_EQ(window_.contentView().mapTo(&window_, QPoint()),
              QPoint(1, MVCustomWindowTitleView::usualHeight));
}

TEST_F(CustomWindowTest, ItIsMovedAtTheTitleAndPulledAtItsEdges) {
    drag({250, 15}, {30, 40});
    EXPECT_EQ(place(), QRect(230, 140, 500, 300));
    drag({250, 15}, {1, 1});
    EXPECT_EQ(place(), QRect(230, 140, 500, 300)) << "a hand that trembles";
    drag({498, 298}, {-20, 60});
    EXPECT_EQ(place(), QRect(230, 140, 480, 360));
    drag({1, 150}, {300, 0});
    EXPECT_EQ(place(), QRect(310, 140, 400, 360)) << "no smaller than it may be";
    window_.setFixedSize(window_.size());
    drag({1, 150}, {-50, 0});
    EXPECT_EQ(place(), QRect(310, 140, 400, 360));
}

TEST_F(CustomWindowTest, ItsTitleBarShowsWhetherItIsTheActiveWindow) {
    window_.activateWindow();
    ASSERT_TRUE(support::waitUntil([&] { return window_.isActiveWindow(); }));
    QMenu menu;
    window_.setMenu(&menu);
    support::serveEvents();
    QWidget& title = window_.titleView();
    const PaintCounter titleBar(&title);
    const PaintCounter background(title.parentWidget());
    const PaintCounter button(title.findChild<WindowButton*>());
    const auto areDrawn = [&](int times) {
        return support::waitUntil([&] {
            return titleBar.paints >= times && background.paints >= times && button.paints >= times;
        });
    };
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(support::waitUntil([&] { return !window_.isActiveWindow(); }));
    EXPECT_TRUE(areDrawn(1)) << titleBar.paints << background.paints << button.paints;
    window_.activateWindow();
    EXPECT_TRUE(areDrawn(2)) << titleBar.paints << background.paints << button.paints;
}

TEST_F(CustomWindowTest, ThePointerTellsOfTheEdges) {
    QWindow* const handle = window_.windowHandle();
    QTest::mouseMove(handle, {250, 298});
    EXPECT_EQ(handle->cursor().shape(), Qt::SizeVerCursor);
    QTest::mouseMove(handle, {1, 1});
    EXPECT_EQ(handle->cursor().shape(), Qt::SizeFDiagCursor);
    QTest::mouseMove(handle, {250, 150});
    EXPECT_EQ(handle->cursor().shape(), Qt::ArrowCursor);
}

TEST_F(CustomWindowTest, ClicksOnTheTitleDoWhatTheDesktopWants) {
    doubleClickTitle();
    EXPECT_TRUE(window_.isMaximized());
    doubleClickTitle();
    EXPECT_FALSE(window_.isMaximized());
    TitleBarSettings titleBar;
    titleBar.doubleClick = TitleBarSettings::Action::none;
    titleBar.middleClick = TitleBarSettings::Action::minimize;
    window_.titleView().setTitleBar(titleBar);
    doubleClickTitle();
    EXPECT_FALSE(window_.isMaximized());
    clickTitle(Qt::MiddleButton);
    EXPECT_TRUE(window_.isMinimized());
}

TEST_F(CustomWindowTest, ButtonsCloseMinimiseAndOpenTheMenu) {
    EXPECT_EQ(window_.titleView().button(Button::menu), nullptr);
    QMenu menu(&window_);
    menu.addAction("First");
    window_.setMenu(&menu);
    const auto click = [&](Button kind) {
        QTest::mouseClick(window_.titleView().button(kind), Qt::LeftButton);
    };
    click(Button::menu);
    EXPECT_TRUE(menu.isVisible());
    EXPECT_EQ(menu.activeAction(), menu.actions()[0]) << "ready for the keys";
    menu.hide();
    clickTitle(Qt::RightButton);
    EXPECT_TRUE(menu.isVisible());
    menu.hide();
    click(Button::minimize);
    EXPECT_TRUE(window_.isMinimized());
    window_.showNormal();
    click(Button::close);
    EXPECT_FALSE(window_.isVisible());
}

TEST_F(CustomWindowTest, ButtonsLieWhereTheDesktopHasThemAndAreMirrored) {
    const auto left = [&](Button kind) {
        const WindowButton* const button = window_.titleView().button(kind);
        return button->mapTo(&window_, QPoint()).x();
    };
    EXPECT_GT(left(Button::close), left(Button::minimize));
    EXPECT_GT(left(Button::minimize), 400);
    window_.setLayoutDirection(Qt::RightToLeft);
    EXPECT_LT(left(Button::close), left(Button::minimize));
    EXPECT_LT(left(Button::minimize), 100);
    window_.setLayoutDirection(Qt::LeftToRight);
    TitleBarSettings titleBar;
    titleBar.placeButtons("close:");
    window_.titleView().setTitleBar(titleBar);
    EXPECT_LT(left(Button::close), 50);
    EXPECT_EQ(window_.titleView().button(Button::minimize), nullptr);
}

TEST(AboutController, ShowsOneBoxInTheMiddleOfTheWindowsScreen) {
    QWidget window;
    window.setGeometry(10, 10, 100, 100);
    QNAboutController about(window);
    about.setShows64BitMark(true);
    about.showWindow();
    auto* const box = window.findChild<QNAboutBox*>();
    ASSERT_NE(box, nullptr);
    const QPoint away = box->geometry().center() - window.screen()->availableGeometry().center();
    EXPECT_LE(away.manhattanLength(), 2);
    const auto labels = box->findChildren<QLabel*>();
    EXPECT_TRUE(
        std::ranges::any_of(labels, [](const QLabel* each) { return each->text() == "64-bit"; }));
    QTest::keyClick(box, Qt::Key_Escape);
    EXPECT_FALSE(box->isVisible());
    about.showWindow();
    EXPECT_TRUE(box->isVisible());
    EXPECT_EQ(window.findChildren<QNAboutBox*>().size(), 1);
}
