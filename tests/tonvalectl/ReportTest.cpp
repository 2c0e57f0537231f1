#include "tonvalectl/Report.h"

#include "tonvalectl/TextWidth.h"

#include <gtest/gtest.h>

TEST(TextWidthTest, CountsAndCutsColumns) {
    const struct {
        std::string text;
        std::size_t columns;
        std::size_t most;
        std::string cut;
    } cases[] = {
        {"", 0, 1, ""},
        {"Music", 5, 5, "Music"},
        {"Music", 5, 4, "Mus…"},
        {"Music", 5, 1, "…"},
        {"播放器", 6, 5, "播放…"},
        {"播放器", 6, 4, "播…"}, // half a character has no room
        {"播放器", 6, 2, "…"},
        {"nai\u0308ve", 5, 4, "nai\u0308…"},
        {"e\u0301e\u0301", 2, 2, "e\u0301e\u0301"},
        {"\U0001F3B5\U0001F3B5", 4, 3, "\U0001F3B5…"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(TextWidth::columns(each.text), each.columns) << each.text;
        EXPECT_EQ(TextWidth::cut(each.text, each.most), each.cut) << each.text << each.most;
    }
}

TEST(ReportTest, JsonHasNamesAsTheyAreAndNothingForATerminal) {
    const std::vector<std::string> names{"\"ä\\ 播", "\x1b\u009b2J\u202e\U000E0041"};
    EXPECT_EQ(Report::json(names), "[\n  \"\\\"ä\\\\ 播\",\n"
                                   "  \"\\u001b\\u009b2J\\u202e\\udb40\\udc41\"\n]\n");
}

TEST(ReportTest, ATableIsNoWiderThanTheTerminal) {
    std::vector<CtlProgram> programs(2);
    programs[0].name = "Music";
    programs[1].name = "播放器 with a long name";
    EXPECT_EQ(Report::table(programs), "NAME                     VOLUME  MUTED  ACTIVITY  PID\n"
                                       "Music                      100%     no         -    -\n"
                                       "播放器 with a long name    100%     no         -    -\n");
    EXPECT_EQ(Report::table(programs, 42), "NAME          VOLUME  MUTED  ACTIVITY  PID\n"
                                           "Music           100%     no         -    -\n"
                                           "播放器 with…    100%     no         -    -\n");
    EXPECT_EQ(Report::table(programs, 10), Report::table(programs, 38)) << "some name is left";
    EXPECT_EQ(Report::table(programs, 200), Report::table(programs));
}
