#include "plugin/effects/RouteVolumePolicy.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

constexpr auto nothing = std::nullopt;

WantedVolume percent(int volume) {
    return {gainOfPercent(volume), nothing};
}

std::string valueOf(const std::string& volumes, bool mute = false) {
    return std::string(R"({"mute":)") + (mute ? "true" : "false") + R"(,"volumes":[)" + volumes +
           R"(],"channels":["FL","FR"]})";
}

class RouteVolumePolicyTest : public testing::Test {
  protected:
    /// The setting is there for a while, with what the session manager remembered.
    void settle(const std::optional<std::string>& value) {
        volume_.appeared();
        EXPECT_EQ(volume_.told(value, now_), WantedVolume{});
        EXPECT_EQ(volume_.settled(wanted_, now_), nothing);
    }

    /// The application asks.
    std::optional<std::string> ask(const WantedVolume& change) {
        wanted_.merge(change);
        return volume_.asked(wanted_, now_);
    }

    WantedVolume told(const std::optional<std::string>& value) {
        const WantedVolume change = volume_.told(value, now_);
        wanted_.merge(change);
        return change;
    }

    RouteVolumePolicy::TimePoint now_{1h};
    WantedVolume wanted_;
    RouteVolumePolicy volume_;
};

} // namespace

TEST_F(RouteVolumePolicyTest, WhatIsWrittenIsWholeAndKeepsBalanceAndChannels) {
    struct Case {
        std::vector<std::string> told;
        WantedVolume wanted;
        std::string written;
    };
    for (const auto& [values, wanted, written] :
         {Case{{}, {nothing, true}, valueOf("1.0,1.0", true)},
          Case{{}, percent(50), valueOf("0.125,0.125")},
          Case{{valueOf("0.5,0.25", true)}, percent(50), valueOf("0.125,0.0625", true)},
          Case{{valueOf("0.5,0.25")}, {nothing, true}, valueOf("0.5,0.25", true)},
          Case{{valueOf("0.5,0.25"), valueOf("0.0,0.0")}, percent(50), valueOf("0.125,0.0625")},
          Case{{R"({"x":[1],"volumes":[1.0],"channels":["MONO"]})"},
               percent(50),
               R"({"x":[1],"mute":false,"volumes":[0.125],"channels":["MONO"]})"},
          Case{{R"({"mute":true})", "rubbish"}, percent(50), valueOf("0.125,0.125")}}) {
        RouteVolumePolicy volume;
        volume.appeared();
        for (const std::string& value : values)
            volume.told(value, now_);
        EXPECT_EQ(volume.settled({}, now_), nothing);
        EXPECT_EQ(volume.asked(wanted, now_), written);
    }
}

TEST_F(RouteVolumePolicyTest, WhatIsThereIsNotWrittenAgain) {
    settle(valueOf("0.12500001,0.125"));
    EXPECT_EQ(ask(percent(50)), nothing);
    EXPECT_TRUE(ask(percent(40)));
    EXPECT_EQ(ask(percent(40)), nothing);
    EXPECT_TRUE(ask(percent(50))) << "the write on its way counts, not what is there still";
}

TEST_F(RouteVolumePolicyTest, OurOwnWritesAreNotChanges) {
    settle(valueOf("1.0,1.0"));
    const auto first = ask(percent(80));
    const auto second = ask(percent(60));
    const auto third = ask(percent(40));
    ASSERT_TRUE(first && second && third);
    EXPECT_EQ(told(first), WantedVolume{});
    EXPECT_EQ(told(second), WantedVolume{});
    EXPECT_EQ(told(third), WantedVolume{});
    EXPECT_EQ(told(second), percent(60)) << "another program set it later";
    EXPECT_EQ(wanted_, percent(60));
}

TEST_F(RouteVolumePolicyTest, TheNewestThatIsToldCountsWhileWritesAreOnTheirWay) {
    settle(valueOf("1.0,1.0"));
    const auto first = ask(percent(80));
    const auto second = ask(percent(40));
    ASSERT_TRUE(first && second);
    EXPECT_EQ(told(valueOf("0.5,0.5")), (WantedVolume{0.5F, nothing})) << "perhaps after ours";
    EXPECT_EQ(told(first), WantedVolume{});
    EXPECT_EQ(told(second), (WantedVolume{gainOfPercent(40), false})) << "no, before";
    EXPECT_EQ(told(valueOf("1.0,1.0")), (WantedVolume{1.0F, nothing}));

    ASSERT_TRUE(ask(percent(50)));
    EXPECT_EQ(told(valueOf("1.0,1.0")), (WantedVolume{1.0F, nothing})) << "and never our own";
    EXPECT_EQ(wanted_.gain, 1.0F);
}

TEST_F(RouteVolumePolicyTest, WhatIsSetBesideIsWrittenOnlyIfWeEverDidSo) {
    settle(valueOf("1.0,1.0"));
    EXPECT_EQ(volume_.changedBeside(percent(80), now_), nothing);
    told(ask(percent(50)));
    EXPECT_EQ(volume_.changedBeside(percent(50), now_), nothing);
    EXPECT_TRUE(volume_.changedBeside(percent(80), now_));
}

TEST_F(RouteVolumePolicyTest, AWriteThatNeverComesBackIsForgotten) {
    settle(valueOf("1.0,1.0"));
    EXPECT_TRUE(ask(percent(80)));
    now_ += RouteVolumePolicy::longestEcho + 1ms;
    EXPECT_TRUE(ask(percent(80)));
    now_ += RouteVolumePolicy::longestEcho + 1ms;
    EXPECT_EQ(told(valueOf("0.125,0.125")), percent(50));
}

TEST_F(RouteVolumePolicyTest, ASliderElsewhereChangesWhatItMovesAndNoMore) {
    settle(valueOf("1.0,1.0"));
    told(ask(percent(50)));
    EXPECT_EQ(told(valueOf("0.125,0.125", true)), (WantedVolume{nothing, true}));
    EXPECT_EQ(told(valueOf("1.0,0.5", true)), (WantedVolume{1.0F, nothing}));
    EXPECT_EQ(told("rubbish"), WantedVolume{});
    EXPECT_EQ(told(nothing), WantedVolume{});
    EXPECT_EQ(told(R"({"mute":true,"volumes":[0.125,0.125]})"), (WantedVolume{0.125F, true}));
}

TEST_F(RouteVolumePolicyTest, ASettingThatCameAgainGetsTheWantedVolume) {
    EXPECT_EQ(ask(percent(50)), nothing) << "nobody is there";
    volume_.appeared();
    EXPECT_EQ(ask({nothing, true}), nothing) << "it may still be filled";
    EXPECT_EQ(told(valueOf("0.9,0.9")), WantedVolume{}) << "what the session manager remembered";
    EXPECT_EQ(volume_.settled(wanted_, now_), valueOf("0.125,0.125", true));
    EXPECT_EQ(volume_.settled(wanted_, now_), nothing);
    volume_.gone();
    EXPECT_EQ(ask(percent(40)), nothing);
}
