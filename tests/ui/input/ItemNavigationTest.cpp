#include "ui/input/ItemNavigation.h"

#include "support/ManualClock.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

// Eight items in three columns:
//     0 1 2
//     3 4 5
//     6 7
TEST(ItemNavigation, KeysLeadThroughTheGridAndNotOut) {
    const ItemNavigation grid{8, 3, 2, Qt::LeftToRight};
    const struct {
        Qt::Key key;
        int from;
        int to;
    } cases[] = {{Qt::Key_Right, 0, 1}, {Qt::Key_Right, 2, 3},    {Qt::Key_Right, 7, 7},
                 {Qt::Key_Left, 3, 2},  {Qt::Key_Left, 0, 0},     {Qt::Key_Down, 1, 4},
                 {Qt::Key_Down, 4, 7},  {Qt::Key_Down, 5, 7},     {Qt::Key_Down, 6, 6},
                 {Qt::Key_Up, 4, 1},    {Qt::Key_Up, 2, 2},       {Qt::Key_Home, 5, 0},
                 {Qt::Key_End, 0, 7},   {Qt::Key_PageDown, 1, 7}, {Qt::Key_PageDown, 3, 7},
                 {Qt::Key_PageUp, 7, 1}};
    for (const auto& each : cases)
        EXPECT_EQ(grid.after(each.key, each.from), each.to) << each.key << " from " << each.from;
    EXPECT_EQ(grid.after(Qt::Key_Down, std::nullopt), 0) << "the first one to begin with";
    EXPECT_EQ(grid.after(Qt::Key_A, 1), std::nullopt);
    EXPECT_EQ((ItemNavigation{0, 1, 1, Qt::LeftToRight}).after(Qt::Key_Down, 0), std::nullopt);
    const ItemNavigation mirrored{8, 3, 2, Qt::RightToLeft};
    EXPECT_EQ(mirrored.after(Qt::Key_Left, 0), 1);
    EXPECT_EQ(mirrored.after(Qt::Key_Right, 1), 0);
}

TEST(TypeAhead, FindsANameByItsBeginningWhileItIsTyped) {
    support::ManualClock clock;
    TypeAhead typed;
    const QStringList names{"Alpha", "Bell tower", "Bell", "Éclair", "Zoom"};
    EXPECT_FALSE(typed.isUnderWay());
    EXPECT_EQ(typed.find("b", names, 0), 1);
    EXPECT_EQ(typed.find("e", names, 1), 1);
    for (const char* const letter : {"l", "l", " "})
        EXPECT_EQ(typed.find(QLatin1String(letter), names, 1), 1);
    EXPECT_TRUE(typed.isUnderWay());
    EXPECT_EQ(typed.find("x", names, 1), std::nullopt);
    clock.advance(TypeAhead::pause);
    EXPECT_FALSE(typed.isUnderWay());
    EXPECT_EQ(typed.find("E", names, 1), 3) << "an accent does not matter";
}

TEST(TypeAhead, TheSameLetterGoesFromOneToTheNext) {
    support::ManualClock clock;
    TypeAhead typed;
    const QStringList names{"Ball", "Bell", "Zoom"};
    EXPECT_EQ(typed.find("b", names, std::nullopt), 0);
    EXPECT_EQ(typed.find("b", names, 0), 1);
    EXPECT_EQ(typed.find("b", names, 1), 0);
    clock.advance(TypeAhead::pause);
    EXPECT_EQ(typed.find("b", names, 0), 1);
    EXPECT_EQ(typed.find("b", {}, std::nullopt), std::nullopt);
}
