#include "platform/window/WindowSight.h"

#include "support/WaitUntil.h"

#include <gtest/gtest.h>

using support::waitUntil;

TEST(WindowSight, TellsOfACoveredAHiddenAndAMinimisedWindow) {
    QWidget window;
    const platform::WindowSight sight(window);
    int changes = 0;
    QObject::connect(&sight, &platform::WindowSight::changed, &window, [&] { ++changes; });
    window.setGeometry(100, 100, 200, 200);
    window.show();
    ASSERT_TRUE(waitUntil([&] { return window.windowHandle()->isExposed(); }));
    EXPECT_TRUE(sight.isSeen());

    QWidget cover(nullptr, Qt::X11BypassWindowManagerHint);
    cover.setGeometry(150, 50, 400, 400);
    cover.show();
    cover.raise();
    ASSERT_TRUE(waitUntil([&] { return cover.windowHandle()->isExposed(); }));
    EXPECT_TRUE(sight.isSeen()) << "in part";
    cover.move(50, 50);
    EXPECT_TRUE(waitUntil([&] { return !sight.isSeen(); }));
    cover.hide();
    EXPECT_TRUE(waitUntil([&] { return sight.isSeen(); }));

    window.hide();
    EXPECT_FALSE(sight.isSeen());
    window.show();
    EXPECT_TRUE(waitUntil([&] { return sight.isSeen(); }));
    window.showMinimized();
    EXPECT_TRUE(waitUntil([&] { return !sight.isSeen(); }));
    EXPECT_GE(changes, 5);
}
