#include "platform/window/WindowVisibility.h"

#include "support/WaitUntil.h"

#include <gtest/gtest.h>

using support::waitUntil;

TEST(WindowVisibility, TellsOfACoveredAHiddenAndAMinimisedWindow) {
    QWidget window;
    const platform::WindowVisibility visibility(window);
    int changes = 0;
    QObject::connect(&visibility, &platform::WindowVisibility::changed, &window,
                     [&] { ++changes; });
    window.setGeometry(100, 100, 200, 200);
    window.show();
    ASSERT_TRUE(waitUntil([&] { return window.windowHandle()->isExposed(); }));
    EXPECT_TRUE(visibility.isVisible());

    QWidget cover(nullptr, Qt::X11BypassWindowManagerHint);
    cover.setGeometry(150, 50, 400, 400);
    cover.show();
    cover.raise();
    ASSERT_TRUE(waitUntil([&] { return cover.windowHandle()->isExposed(); }));
    EXPECT_TRUE(visibility.isVisible()) << "in part";
    cover.move(50, 50);
    EXPECT_TRUE(waitUntil([&] { return !visibility.isVisible(); }));
    cover.hide();
    EXPECT_TRUE(waitUntil([&] { return visibility.isVisible(); }));

    window.hide();
    EXPECT_FALSE(visibility.isVisible());
    window.show();
    EXPECT_TRUE(waitUntil([&] { return visibility.isVisible(); }));
    window.showMinimized();
    EXPECT_TRUE(waitUntil([&] { return !visibility.isVisible(); }));
    EXPECT_GE(changes, 5);
}
