#include "RememberedVolumesFixture.h"

#include "comm/MVCommMessages.h"

#include <functional>
#include <tuple>

using namespace std::chrono_literals;

namespace {

using RememberedVolumesTest = RememberedVolumesFixture;

} // namespace

TEST_F(RememberedVolumesTest, TheFirstReadingIsForWhatComes) {
    EXPECT_EQ(remembered_.of("player"), nothing);
    EXPECT_EQ(read({40, true}), nothing) << "what plays may be quieter";
    EXPECT_EQ(consequences_[0].forNext, both(40, true));
    EXPECT_EQ(remembered_.of("player"), both(40, true));
    EXPECT_EQ(remembered_.of("Player"), full) << "another one, which nobody has set";
    EXPECT_EQ(remembered_.of(std::string(kMVCommNotificationSoundsName)), nothing);
}

TEST_F(RememberedVolumesTest, AnEntryCountsWhenItHasChanged) {
    read(ProgramSetting{});
    EXPECT_EQ(read({40, false}), volume(40));
    EXPECT_EQ(read({40, false}), nothing);
    EXPECT_EQ(read({40, true}), (WantedVolume{{}, true})) << "only what differs";
    EXPECT_EQ(read(ProgramSetting{}), full) << "absent is full and not muted";
    EXPECT_EQ(remembered_.of("player"), full) << "also for what comes";
    EXPECT_EQ(consequences_[0].forNext, nothing);
}

TEST_F(RememberedVolumesTest, ForASecondAfterACommandTheFileIsIgnoredForThatProgram) {
    programs_.push_back({twin, "player", {}});
    read(ProgramSetting{});
    command(volume(50));
    clock_.advance(100ms);
    EXPECT_EQ(read({60, false}), nothing) << "an earlier step of a drag";
    EXPECT_EQ(consequences_[1].wanted, volume(60)) << "the other one follows the file";
    EXPECT_EQ(remembered_.of("player"), both(50, false));
    clock_.advance(100ms);
    EXPECT_EQ(read({50, false}), nothing);
    EXPECT_EQ(consequences_[1].wanted, volume(50));
    clock_.advance(799ms);
    EXPECT_EQ(read({70, false}), nothing);
    clock_.advance(1ms);
    EXPECT_EQ(read({70, false}), nothing) << "it was read before";
    EXPECT_EQ(read({80, false}), volume(80));
    EXPECT_EQ(remembered_.of("player"), both(80, false));
}

TEST_F(RememberedVolumesTest, AChangeElsewhereIsReportedOnceAndOutlivesTheProgram) {
    read({50, false});
    programs_[0].wanted = both(50, false);
    EXPECT_EQ(changeElsewhere(volume(30)), (ProgramSetting{30, false}));
    EXPECT_EQ(remembered_.connected(programs_[0], clock_.now()), std::nullopt);
    EXPECT_EQ(changeElsewhere({gainOfPercent(30) * 1.00001F, {}}), std::nullopt)
        << "nobody sees it";
    EXPECT_EQ(changeElsewhere({{}, true}, false), std::nullopt) << "the application is away";
    EXPECT_EQ(changeElsewhere({1.728F, {}}, false), std::nullopt);
    const RememberedVolumes::Program next{pid + 5, "player", remembered_.of("player")};
    EXPECT_EQ(next.wanted, (WantedVolume{1.728F, true})) << "it is newer than the file";
    EXPECT_EQ(remembered_.connected({7, "another", {}}, clock_.now()), std::nullopt);
    EXPECT_EQ(remembered_.connected(next, clock_.now()), (ProgramSetting{120, true}));
    EXPECT_EQ(remembered_.connected(next, clock_.now()), std::nullopt);
}

TEST_F(RememberedVolumesTest, WhatWasFoundAtFullVolumeIsNothingNew) {
    EXPECT_EQ(changeElsewhere(full), std::nullopt);
    EXPECT_EQ(remembered_.of("player"), nothing) << "no preferences, no say";
    EXPECT_EQ(changeElsewhere(both(100, true)), (ProgramSetting{100, true}));
}

TEST_F(RememberedVolumesTest, WhatComesBackFromAReportIsNotTheFilesWord) {
    read(ProgramSetting{});
    const WantedVolume amplified{1.728F, {}}; // 120 percent
    for (const WantedVolume& change : {volume(90), volume(80), volume(70), amplified})
        EXPECT_TRUE(changeElsewhere(change));
    clock_.advance(1900ms);
    for (const int percent : {90, 70})
        EXPECT_EQ(read({percent, false}), nothing) << "others are behind it";
    EXPECT_EQ(read(ProgramSetting{}), nothing) << "as the application keeps it";
    EXPECT_EQ(remembered_.of("player"), (WantedVolume{amplified.gain, false}));
    EXPECT_EQ(read({60, false}), volume(60)) << "this was set explicitly";
    EXPECT_TRUE(changeElsewhere(volume(65)));
    clock_.advance(2s);
    EXPECT_EQ(read({65, false}), nothing) << "it is as it should be";
    EXPECT_EQ(read({60, false}), volume(60));
}

TEST_F(RememberedVolumesTest, TheNewestOfThreeWins) {
    const auto byCommand = [this] { command(both(50, false)); };
    const auto elsewhere = [this] { (void)changeElsewhere(both(30, false), false); };
    const auto inFile = [this] { read({70, false}); };
    struct Case {
        std::vector<std::function<void()>> order;
        int expected;
    };
    for (const auto& [order, expected] :
         {Case{{byCommand, elsewhere, inFile}, 70}, Case{{byCommand, inFile, elsewhere}, 30},
          Case{{elsewhere, inFile, byCommand}, 50}, Case{{inFile, elsewhere, byCommand}, 50},
          Case{{elsewhere, byCommand, inFile}, 70}, Case{{inFile, byCommand, elsewhere}, 30}}) {
        remembered_ = RememberedVolumes("own");
        programs_[0].wanted = {};
        read({10, false});
        for (const auto& step : order) {
            clock_.advance(2s);
            step();
        }
        EXPECT_EQ(settingOf(programs_[0].wanted), (ProgramSetting{expected, false}));
        EXPECT_EQ(settingOf(remembered_.of("player")), (ProgramSetting{expected, false}));
    }
}

TEST_F(RememberedVolumesTest, AnIgnoredProgramThatWasChangedIsFreedOnce) {
    const IgnoredNames ignored{{"PLAYER"}, {}};
    const auto reset = [this] {
        EXPECT_TRUE(consequences_.at(0).ignored);
        EXPECT_EQ(consequences_[0].wanted, nothing);
        return consequences_[0].reset;
    };
    read({40, false});
    EXPECT_EQ(read(says({40, false}, ignored)), nothing);
    EXPECT_TRUE(reset());
    read(says({30, false}, ignored));
    EXPECT_FALSE(reset()) << "nothing of it is touched any more";
    EXPECT_FALSE(remembered_.takePendingReset("player"));
    EXPECT_EQ(remembered_.of("player"), nothing);
    EXPECT_EQ(changeElsewhere(volume(70)), std::nullopt);
    command(volume(100));
    EXPECT_EQ(read({30, false}), both(30, false)) << "taken up again at once";
    EXPECT_EQ(remembered_.of("player"), both(30, false));
}

TEST_F(RememberedVolumesTest, OnlyWhatWeChangedIsFreed) {
    const IgnoredNames ignored{{"player"}, {}};
    const auto entry = [this] { read({40, false}); };
    const auto muted = [this] { command({{}, true}); };
    const auto elsewhere = [this] { (void)changeElsewhere(volume(40)); };
    const std::vector<std::tuple<const char*, std::function<void()>, bool>> cases{
        {"nothing", [] {}, false},       {"entry", entry, true},
        {"command", muted, true},        {"command to full", [this] { command(full); }, false},
        {"elsewhere", elsewhere, false}, {"both", [&] { muted(), elsewhere(); }, true}};
    for (const auto& [what, before, expected] : cases) {
        SCOPED_TRACE(what);
        remembered_ = RememberedVolumes("own");
        programs_ = {{pid, "player", {}}};
        read(ProgramSetting{});
        before();
        const RememberedVolumes asBefore = remembered_;
        read(says({}, ignored));
        EXPECT_EQ(consequences_[0].reset, expected);
        // The same for a program that comes later.
        remembered_ = asBefore;
        programs_.clear();
        read(says({}, ignored));
        EXPECT_EQ(remembered_.takePendingReset("player"), expected);
        EXPECT_FALSE(remembered_.takePendingReset("player"));
    }
}

TEST_F(RememberedVolumesTest, WhatIsIgnoredFromTheStartIsLeftAlone) {
    programs_.clear();
    read(says({40, false}, {{"player"}, {}}));
    EXPECT_EQ(remembered_.of("player"), nothing);
    EXPECT_FALSE(remembered_.takePendingReset("player")) << "that was long ago";
    EXPECT_TRUE(remembered_.isIgnored("finder"));
}

TEST_F(RememberedVolumesTest, AProgramThatWasNeverSeenBeginsAtTheVolumeOfNewOnes) {
    Preferences preferences = says({});
    preferences.forNew = 30;
    preferences.seen = {"other"};
    read(preferences);
    EXPECT_EQ(remembered_.of("player"), both(30, false));
    EXPECT_EQ(remembered_.of("other"), full);
    EXPECT_EQ(remembered_.of("coreaudiod"), nothing) << "is no program";
    preferences.forNew.reset();
    EXPECT_EQ(read(preferences), nothing);
    EXPECT_EQ(remembered_.of("player"), full);

    preferences.forNew = 30;
    read(preferences);
    programs_[0].wanted = both(30, false);
    command(volume(30)); // the application has got to know it
    preferences.seen.insert("player");
    preferences.programs["player"] = {30, false};
    EXPECT_EQ(read(preferences), nothing);
    clock_.advance(2s);
    preferences.programs.clear();
    EXPECT_EQ(read(preferences), volume(100));
    EXPECT_EQ(remembered_.of("player"), full) << "it is known, and was set to that";
}

TEST_F(RememberedVolumesTest, AProgramOfANewNameHasWhatIsRememberedByTheFormerOne) {
    constexpr ProgramSetting former{40, true};
    const struct {
        const char* about;
        bool isVisible;
        ProgramSetting own;
        ProgramSetting former;
        std::optional<int> forNew;
        WantedVolume expected;
    } cases[] = {{"never seen", false, {}, former, 30, both(40, true)},
                 {"has one of its own", true, {70, false}, former, 30, both(70, false)},
                 {"set to full volume", true, {}, former, 30, full},
                 {"nothing remembered", false, {}, {}, 30, both(30, false)},
                 {"nothing at all", false, {}, {}, {}, full}};
    for (const auto& each : cases) {
        remembered_ = RememberedVolumes("own");
        Preferences preferences = says(each.own);
        preferences.forNew = each.forNew;
        if (!each.former.isPlain())
            preferences.programs["player-bin"] = each.former;
        preferences.programs[""] = {10, false}; // nobody's
        if (each.isVisible)
            preferences.seen = {"player"};
        read(preferences);
        EXPECT_EQ(remembered_.of("player", "player-bin"), each.expected) << each.about;
        EXPECT_EQ(remembered_.of("another", ""), both(each.forNew.value_or(100), false));
    }
    programs_[0] = {pid, "player", both(40, true), "player-bin"};
    Preferences preferences = says({}, {{"player"}, {}});
    preferences.programs["player-bin"] = former;
    read(preferences);
    preferences.ignored = {};
    EXPECT_EQ(read(preferences), both(40, true)) << "when it is ignored no more";
    preferences.programs["player"] = former;
    EXPECT_EQ(read(preferences), nothing) << "the application has made it the program's own";

    for (const bool isKnown : {false, true}) {
        remembered_ = RememberedVolumes("own");
        preferences = says({}, {{"player-bin"}, {}});
        if (isKnown)
            preferences.seen = {"player"};
        read(preferences);
        EXPECT_EQ(consequences_[0].ignored, !isKnown) << "it keeps being ignored until it is known";
        EXPECT_EQ(remembered_.of("player", "player-bin"), isKnown ? full : nothing);
        EXPECT_EQ(remembered_.of("player"), full);
        EXPECT_EQ(changeElsewhere(volume(50)).has_value(), isKnown);
        preferences.ignored = {};
        read(preferences);
        EXPECT_FALSE(consequences_[0].ignored);
    }
    remembered_ = RememberedVolumes("own");
    programs_[0].wanted = {};
    preferences = says({});
    preferences.programs["player-bin"] = former;
    EXPECT_EQ(remembered_.told({preferences}, programs_, clock_.now()).consequences[0].wanted,
              both(40, true))
        << "also of one that came before the word";
}

TEST_F(RememberedVolumesTest, WhoIsForgottenIsNewWhenItComesAgain) {
    for (const bool isRunning : {true, false}) {
        SCOPED_TRACE(isRunning);
        remembered_ = RememberedVolumes("own");
        Preferences preferences = says({60, true});
        preferences.forNew = 30;
        preferences.seen = {"player"};
        read(preferences);
        programs_[0].wanted = both(60, true);
        if (isRunning)
            command(full);
        preferences = says({});
        preferences.forNew = 30;
        EXPECT_EQ(read(preferences), isRunning ? nothing : full);
        EXPECT_EQ(remembered_.of("player"), both(30, false));
        clock_.advance(2s);
    }
    Preferences preferences = says({});
    preferences.forNew = 30;
    preferences.seen = {"player"};
    read(preferences);
    preferences.seen.clear(); // of one at full volume there was nothing else
    EXPECT_EQ(read(preferences), nothing) << "what plays stays as it is";
    EXPECT_EQ(remembered_.of("player"), both(30, false));
    EXPECT_EQ(changeElsewhere(volume(50), false), std::nullopt);
    EXPECT_EQ(remembered_.of("player"), both(50, false)) << "somebody has set it by now";
}
