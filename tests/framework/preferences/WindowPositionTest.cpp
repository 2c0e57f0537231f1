#include "framework/preferences/WindowPosition.h"

#include <gtest/gtest.h>

namespace {

const QRect first(0, 0, 1280, 800);
const QRect right(1280, 200, 1920, 1080);

} // namespace

TEST(WindowPosition, IsThePlaceOnTheScreenThatTheWindowIsOn) {
    EXPECT_EQ(WindowPosition::text({100, 50, 300, 200}, first), "{100, 50}");
    EXPECT_EQ(WindowPosition::text({1300, 260, 300, 200}, right), "{1300, 60}");
    for (const auto& [frame, screen] : {std::pair{QRect(100, 50, 300, 200), first},
                                        std::pair{QRect(1300, 260, 300, 200), right}}) {
        const auto stored = WindowPosition::parsed(WindowPosition::text(frame, screen));
        ASSERT_TRUE(stored);
        EXPECT_EQ(WindowPosition::topLeft(*stored, {first, right}), frame.topLeft());
    }
    EXPECT_EQ(WindowPosition::topLeft({-4000, 10}, {first, right}), QPoint(-4000, 10));
}

TEST(WindowPosition, IsReadFromNothingButAPoint) {
    for (const auto& [text, point] : {std::pair{"{0, 0}", QPoint(0, 0)},
                                      {"{-20, 33}", QPoint(-20, 33)},
                                      {"{10.5, -0.25}", QPoint(11, 0)}})
        EXPECT_EQ(WindowPosition::parsed(text), point) << text;
    for (const char* const text :
         {"", "{}", "{1}", "{1,2}", "{1, 2", "1, 2", "{1, 2}\n", " {1, 2}", "{1, 2, 3}", "{a, 2}",
          "{nan, 0}", "{1e9, 0}", "{99999999999999999999, 0}", "{999999, 0}", "{1, --2}"})
        EXPECT_EQ(WindowPosition::parsed(text), std::nullopt) << text;
}
