#include "look/window/AlertWindow.h"

#include "look/window/BarButton.h"
#include "support/ManualClock.h"
#include "support/SystemLogRecorder.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QPlainTextEdit>
#include <QTest>
#include <QTimer>

#include <chrono>
#include <functional>

using platform::Alert;
using namespace std::chrono_literals;

namespace {

class AlertWindowTest : public testing::Test {
  protected:
    AlertWindowTest() { AlertWindow::install(); }
    void TearDown() override { platform::replaceAlertPresenter(nullptr); }

    /// What comes of an alert when this is done in its window.
    static Alert::Button answer(const Alert& alert, const std::function<void(AlertWindow&)>& act) {
        QTimer::singleShot(0, [&act] {
            auto* const window = qobject_cast<AlertWindow*>(QApplication::activeModalWidget());
            ASSERT_NE(window, nullptr);
            act(*window);
        });
        return alert.run();
    }
};

void escape(AlertWindow& window) {
    QTest::keyClick(&window, Qt::Key_Escape);
}

} // namespace

TEST_F(AlertWindowTest, AnswersItsButtonsAndWhatClosingCountsAs) {
    const Alert three{.title = "Title",
                      .message = "Text",
                      .defaultButton = "Remove & Restart",
                      .alternateButton = "Cancel",
                      .otherButton = "Remove"};
    const Alert::Button inOrder[] = {Alert::other, Alert::alternate, Alert::standard};
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(answer(three, [i](AlertWindow& window) { window.buttons()[i]->click(); }),
                  inOrder[i]);
    EXPECT_EQ(answer(three,
                     [](AlertWindow& window) {
                         EXPECT_EQ(window.buttons().last()->text(), "Remove && Restart");
                         EXPECT_TRUE(window.buttons().last()->shortcut().isEmpty());
                         QTest::keyClick(window.focusWidget(), Qt::Key_Return);
                     }),
              Alert::standard)
        << "the default button has the focus";
    EXPECT_EQ(answer(three, &escape), Alert::alternate);
    EXPECT_EQ(answer({.title = "One", .message = "", .defaultButton = "OK"}, &escape),
              Alert::standard);
}

TEST_F(AlertWindowTest, OneThatIsGuardedIsClosedWithoutItsButtonAndTakesNoKeyForASecond) {
    support::ManualClock clock;
    const Alert guarded{
        .title = "Title", .message = "", .defaultButton = "Restart", .isGuarded = true};
    EXPECT_EQ(answer(guarded, [](AlertWindow& window) { window.close(); }), Alert::alternate);
    EXPECT_EQ(answer(guarded, [](AlertWindow& window) { window.buttons()[0]->click(); }),
              Alert::standard);
    const auto keys = [&](Qt::Key key) {
        return answer(guarded, [&clock, key](AlertWindow& window) {
            clock.advance(999ms);
            QTest::keyClick(window.buttons()[0], key);
            EXPECT_TRUE(window.isVisible());
            clock.advance(1ms);
            QTest::keyClick(window.buttons()[0], key);
        });
    };
    EXPECT_EQ(keys(Qt::Key_Return), Alert::standard);
    EXPECT_EQ(keys(Qt::Key_Escape), Alert::alternate);
}

TEST_F(AlertWindowTest, ASheetStandsOnItsWindowAndDoesNotWait) {
    QWidget parent;
    parent.resize(600, 300);
    parent.show();
    Alert{.title = "Sheet", .message = "", .defaultButton = "OK", .details = "more"}.showOn(parent);
    auto* const sheet = parent.findChild<AlertWindow*>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(sheet->windowModality(), Qt::WindowModal);
    EXPECT_TRUE(parent.geometry().contains(sheet->geometry().center()));
    const int before = sheet->height();
    auto* const details = sheet->findChild<QPlainTextEdit*>();
    EXPECT_FALSE(details->isVisible());
    QTest::mouseClick(sheet->findChild<BarButton*>(), Qt::LeftButton); // the first
    EXPECT_TRUE(details->isVisible());
    EXPECT_GT(sheet->height(), before);
    sheet->buttons()[0]->click();
    EXPECT_FALSE(sheet->isVisible());
}

TEST(Alert, WithoutAPresenterItIsALineInTheSystemLogAndCountsAsClosed) {
    const support::SystemLogRecorder log;
    EXPECT_EQ((Alert{.title = "Nobody", .message = "sees it", .defaultButton = "OK"}.run()),
              Alert::standard);
    EXPECT_TRUE(log.contains("Nobody sees it"));
}
