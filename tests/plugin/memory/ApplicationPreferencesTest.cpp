#include "RememberedVolumesFixture.h"

#include <functional>
#include <initializer_list>

using namespace std::chrono_literals;

// What the application tells, and what the plug-in knows better.
namespace {

using ApplicationPreferencesTest = RememberedVolumesFixture;

} // namespace

TEST_F(ApplicationPreferencesTest, WhenTheyMeetTheNewestOfEachIsKept) {
    const std::set<std::string, std::less<>> isNews{"player"};
    const auto nothingSince = [] {};
    const auto setByCommand = [this] { command(both(30, true)); };
    const auto setElsewhere = [this] { (void)changeElsewhere(both(30, true), false); };
    const auto setByWord = [this, isNews] {
        tell({30, true}, isNews);
        restartApplication();
    };
    const auto setAndSaved = [this] {
        command(both(30, true));
        read({30, true});
    };
    const auto plainAndSaved = [this] {
        command(full);
        Preferences saved = says({});
        saved.seen = {"player"};
        read(std::move(saved));
    };
    struct Case {
        const char* what;
        std::function<void()> before;
        ProgramSetting restored;
        bool isSetSince;
        std::string file;
        ProgramSetting kept;
        bool isAnswered;
    };
    for (const Case& each : std::initializer_list<Case>{
             {"as read", nothingSince, {10, false}, false, "own", {10, false}, false},
             {"more than read", nothingSince, {60, false}, false, "own", {60, false}, false},
             {"another file", nothingSince, {60, true}, false, "other", {60, true}, false},
             {"killed unsaved", setByCommand, {10, false}, false, "own", {30, true}, true},
             {"half saved", setByCommand, {30, false}, false, "own", {30, true}, true},
             {"saved", setByCommand, {30, true}, false, "own", {30, true}, false},
             {"killed unsaved, a word", setByWord, {10, false}, false, "own", {30, true}, true},
             {"changed since", setByCommand, {70, false}, true, "own", {70, false}, false},
             {"changed since to plain", setByCommand, {}, true, "own", {}, false},
             {"saved, then changed", setAndSaved, {70, false}, true, "own", {70, false}, false},
             {"saved plain, then more",
              plainAndSaved,
              {70, false},
              false,
              "own",
              {70, false},
              false},
             {"of another's file", setByCommand, {70, false}, false, "other", {70, false}, false},
             {"mixer", setElsewhere, {10, false}, false, "own", {30, true}, true},
             {"mixer, another file", setElsewhere, {10, false}, false, "other", {30, true}, true},
             {"mixer, changed since",
              setElsewhere,
              {70, false},
              true,
              "own",
              {70, false},
              false}}) {
        SCOPED_TRACE(each.what);
        remembered_ = RememberedVolumes("own");
        programs_[0].wanted = both(10, false);
        read({10, false});
        each.before();
        restartApplication();
        tell(each.restored, each.isSetSince ? isNews : std::set<std::string, std::less<>>{},
             each.file);
        EXPECT_EQ(settingOf(programs_[0].wanted), each.kept);
        EXPECT_EQ(settingOf(remembered_.of("player")), each.kept);
        const NamedSettings answer{{"player", each.kept}};
        EXPECT_EQ(newer_, each.isAnswered ? answer : NamedSettings{});
        EXPECT_EQ(remembered_.connected(programs_[0], clock_.now()), std::nullopt);
        EXPECT_EQ(tell(each.kept), nothing) << "as the application has it by now";
        EXPECT_EQ(newer_, NamedSettings{});
    }
}

TEST_F(ApplicationPreferencesTest, WhatIsNewHoldsForAWhileAlsoForWhatPlaysAlready) {
    tell({40, false});
    EXPECT_FALSE(remembered_.isNews("player", clock_.now()));
    tell({60, false}, {"player"});
    read({60, false});
    EXPECT_TRUE(remembered_.isNews("player", clock_.now())) << "whether it is saved or not";
    clock_.advance(10s);
    EXPECT_FALSE(remembered_.isNews("player", clock_.now()));
}

TEST_F(ApplicationPreferencesTest, TheFileCountsOnlyWhileNoApplicationTells) {
    read({10, false});
    programs_[0].wanted = both(10, false);
    EXPECT_EQ(tell({40, false}), volume(40));
    EXPECT_EQ(read({60, false}), nothing) << "the application knows better";
    EXPECT_TRUE(consequences_.empty());
    remembered_.applicationChanged(false);
    EXPECT_EQ(read({60, true}), both(60, true)) << "what is new in it";
    EXPECT_EQ(remembered_.of("player"), both(60, true));

    remembered_ = RememberedVolumes("own");
    programs_[0].wanted = both(40, false);
    tell({40, false});
    remembered_.applicationChanged(false);
    EXPECT_EQ(read({10, false}), nothing) << "nobody knows how old that is";
    EXPECT_EQ(remembered_.of("player"), both(40, false));
}

TEST_F(ApplicationPreferencesTest, ACommandIsNewerThanAMessageOfTheSameApplication) {
    read(ProgramSetting{});
    tell({});
    command(volume(50));
    EXPECT_EQ(tell({40, false}, {"player"}), nothing) << "an earlier step of a drag";
    EXPECT_EQ(remembered_.of("player"), both(50, false));
    restartApplication();
    EXPECT_EQ(tell({20, false}, {"player"}), volume(20)) << "that was another one's command";
    EXPECT_EQ(tell({60, false}, {"player"}), volume(60));
    EXPECT_EQ(tell({}, {"player"}), volume(100));
    EXPECT_EQ(remembered_.of("player"), full);

    command(volume(50));
    programs_.clear();
    Preferences later = says({40, false});
    later.seen = {"player"};
    const auto outcome = remembered_.told({std::move(later), {"player"}}, programs_, clock_.now());
    EXPECT_TRUE(outcome.consequences.empty());
    EXPECT_EQ(remembered_.of("player"), both(40, false)) << "set when the program had left";
}

TEST_F(ApplicationPreferencesTest, NothingThatWasFoundQuieterIsMadeLouderByWhatIsRestored) {
    read({50, false});
    programs_[0].wanted = both(30, true); // as it was found
    EXPECT_EQ(tell({80, false}), nothing);
    EXPECT_EQ(remembered_.of("player"), both(80, false)) << "but what comes has it";
    restartApplication();
    EXPECT_EQ(tell({20, false}), volume(20)) << "quieter it may be";
    restartApplication();
    programs_[0].wanted = both(20, false);
    EXPECT_EQ(tell({60, false}), volume(60)) << "we have made it so";
    for (const bool isNews : {false, true}) {
        restartApplication();
        ApplicationPreferences word{says({70, false})};
        if (isNews)
            word.news = {"player"};
        EXPECT_EQ(remembered_.told(word, programs_, clock_.now()).consequences[0].restored, !isNews)
            << "of what is news somebody has asked for it";
    }
}

TEST_F(ApplicationPreferencesTest, IgnoredAndForgottenProgramsFollowTheMessage) {
    read({50, false});
    programs_[0].wanted = both(50, false);
    const Preferences ignoring = says({50, false}, {{"player"}, {}});
    EXPECT_TRUE(remembered_.told({ignoring}, programs_, clock_.now()).consequences[0].reset);
    command(volume(30));
    restartApplication();
    EXPECT_TRUE(remembered_.told({ignoring}, programs_, clock_.now()).newer.empty());
    EXPECT_EQ(tell({50, false}), both(50, false)) << "it is taken up again";

    command(volume(30));
    Preferences forgotten = says({});
    forgotten.forNew = 70;
    programs_[0].wanted = full;
    clock_.advance(2s);
    EXPECT_EQ(
        remembered_.told({forgotten, {"player"}}, programs_, clock_.now()).consequences[0].wanted,
        nothing)
        << "while it runs it stays at full volume, as its slider shows";
    EXPECT_EQ(remembered_.of("player"), both(70, false));
}
