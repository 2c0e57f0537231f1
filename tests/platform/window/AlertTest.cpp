#include "platform/window/Alert.h"

#include "support/ManualClock.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <chrono>
#include <functional>

using platform::Alert;
using namespace std::chrono_literals;

namespace {

/// What comes of an alert with one button in whose box this is done.
Alert::Button answer(bool isGuarded, const std::function<void(QMessageBox&)>& act) {
    QTimer::singleShot(0, [&act] {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        act(*box);
    });
    return Alert{
        .title = "Title", .message = "Text", .defaultButton = "Restart", .isGuarded = isGuarded}
        .run();
}

} // namespace

TEST(Alert, ShowsTheTextOfItsButtonAsItIs) {
    QTimer::singleShot(0, [] {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        EXPECT_EQ(box->buttons()[0]->text(), "Remove && Restart") << "an escaped ampersand";
        EXPECT_TRUE(box->buttons()[0]->shortcut().isEmpty());
        box->close();
    });
    EXPECT_EQ(
        (Alert{.title = "Title", .message = "Text", .defaultButton = "Remove & Restart"}.run()),
        Alert::standard);
}

TEST(Alert, OneThatIsGuardedIsClosedWithoutItsButtonAndTakesNoKeyForASecond) {
    support::ManualClock clock;
    const auto escape = [](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); };
    const auto close = [](QMessageBox& box) { box.close(); };
    const auto enter = [](QMessageBox& box) { QTest::keyClick(box.buttons()[0], Qt::Key_Return); };
    EXPECT_EQ(answer(false, escape), Alert::standard);
    EXPECT_EQ(answer(false, close), Alert::standard);
    EXPECT_EQ(answer(true, close), Alert::alternate);
    EXPECT_EQ(answer(true, [](QMessageBox& box) { box.buttons()[0]->click(); }), Alert::standard);
    EXPECT_EQ(answer(true,
                     [&](QMessageBox& box) {
                         clock.advance(999ms);
                         enter(box);
                         escape(box);
                         EXPECT_TRUE(box.isVisible());
                         clock.advance(1ms);
                         enter(box);
                     }),
              Alert::standard);
    EXPECT_EQ(answer(true,
                     [&](QMessageBox& box) {
                         clock.advance(1s);
                         escape(box);
                     }),
              Alert::alternate);
}
