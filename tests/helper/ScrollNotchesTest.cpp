#include "helper/ScrollNotches.h"

#include "support/ManualClock.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

using namespace std::chrono_literals;

TEST(ScrollNotches, CollectsWholeNotchesInTheDialectOfTheHost) {
    struct Case {
        const char* host;
        std::vector<int> deltas;
        std::vector<int> notches;
    };
    for (const Case& each :
         {Case{"plasmashell", {120, -120, 240, 0}, {1, -1, 2, 0}},
          Case{"lxqt-panel", {40, 40, 40, 40}, {0, 0, 1, 0}},
          Case{"kded5", {100, -30, -90}, {0, 0, -1}},
          Case{"kded6", {8, 8, 104, 119, 1}, {0, 0, 1, 0, 1}},
          Case{"gnome-shell", {-1, 1, 3, -2}, {1, -1, -3, 2}}, Case{"waybar", {120}, {-20}},
          Case{"another", {120, -1, 1, -120, 2}, {1, 1, -1, -1, -2}},
          Case{"", {INT_MAX, INT_MIN, 0}, {20, -20, 0}},
          Case{"gnome-shell", {INT_MAX, INT_MIN}, {-20, 20}}}) {
        const support::ManualClock clock;
        ScrollNotches wheel;
        std::vector<int> notches;
        for (const int delta : each.deltas)
            notches.push_back(wheel.turned(delta, scrollDialectOf(each.host)));
        EXPECT_EQ(notches, each.notches) << each.host;
    }
}

TEST(ScrollNotches, ForgetsThePartOfANotchAfterAPause) {
    support::ManualClock clock;
    ScrollNotches wheel;
    EXPECT_EQ(wheel.turned(100, ScrollDialect::angle), 0);
    clock.advance(500ms);
    EXPECT_EQ(wheel.turned(100, ScrollDialect::angle), 1);
    clock.advance(501ms);
    EXPECT_EQ(wheel.turned(100, ScrollDialect::angle), 0);
}
