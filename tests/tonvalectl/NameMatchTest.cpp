#include "tonvalectl/NameMatch.h"

#include "tonvalectl/Failure.h"

#include <gtest/gtest.h>

namespace {

using Names = std::vector<std::string>;

ExitCode refusalOf(const std::string& wanted, const Names& names) {
    try {
        nameMeant(wanted, names);
    } catch (const Failure& failure) {
        return failure.code();
    }
    return ExitCode::success;
}

} // namespace

TEST(NameMatchTest, TheNearestKindOfLikenessDecides) {
    const Names names{"Music",  "music", "Music Box", "Firefox",    "Firewatch",
                      "Straße", "naïve", "tab\tbed",  "re\u202etaw"};
    const struct {
        const char* wanted;
        Names meant;
    } cases[] = {{"Music", {"Music"}},
                 {"music", {"music"}},
                 {"MUSIC", {"Music", "music"}},
                 {"Music ", {"Music Box"}},
                 {"firef", {"Firefox"}},
                 {"Fire", {"Firefox", "Firewatch"}},
                 {"fox", {}},
                 {"Firefox ", {}},
                 {"", {}},
                 {"STRASSE", {"Straße"}},
                 {"nai\u0308v", {"naïve"}}, // the accent by itself
                 {"TAB BED", {"tab\tbed"}}, // as it is shown
                 {"reta", {"re\u202etaw"}},
                 {"\u200b", {}},
                 {"\xff", {}}};
    for (const auto& [wanted, meant] : cases)
        EXPECT_EQ(namesMeant(wanted, names), meant) << wanted;
}

TEST(NameMatchTest, ADoubtfulNameIsRefusedWithAllThatItMayMean) {
    EXPECT_EQ(nameMeant("b", {"a", "bb", "bb"}), "bb") << "twice the same is no doubt";
    EXPECT_EQ(refusalOf("c", {"a", "b"}), ExitCode::noSuchProgram);
    EXPECT_EQ(refusalOf("a", {}), ExitCode::noSuchProgram);
    try {
        nameMeant("p", {"player", "other", "Piano\x1b[2J"});
        ADD_FAILURE();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code(), ExitCode::ambiguousName);
        EXPECT_STREQ(failure.what(), "“p” may be any of: player, Piano [2J")
            << "what a program calls itself does nothing to a terminal";
    }
}
