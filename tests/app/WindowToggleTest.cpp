#include "app/WindowToggle.h"

#include "support/ManualClock.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QWidget>

using namespace std::chrono_literals;
using support::waitUntil;

TEST(WindowToggle, AWindowInFrontUntilJustNowGoesAway) {
    support::ManualClock clock;
    QWidget window;
    QWidget other;
    const WindowToggle toggle(window);
    const auto activate = [](QWidget& each) {
        each.show();
        each.activateWindow();
        return waitUntil([&] { return each.isActiveWindow(); });
    };
    EXPECT_FALSE(toggle.goesAway()) << "it is hidden";
    ASSERT_TRUE(activate(window));
    clock.advance(1h);
    EXPECT_TRUE(toggle.goesAway());
    ASSERT_TRUE(activate(other));
    clock.advance(500ms);
    EXPECT_TRUE(toggle.goesAway()) << "the click has taken the focus";
    clock.advance(1ms);
    EXPECT_FALSE(toggle.goesAway());
    ASSERT_TRUE(activate(window));
    window.hide();
    EXPECT_FALSE(toggle.goesAway());
}
