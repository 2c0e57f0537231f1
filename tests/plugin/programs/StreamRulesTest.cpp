#include "plugin/programs/StreamRules.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr WantedVolume nothing{};

std::optional<StreamPlayer> player(std::uint32_t pid, bool showsPages = false) {
    StreamPlayer player;
    player.process.pid = pid;
    player.showsPages = showsPages;
    return player;
}

} // namespace

TEST(StreamRules, NotificationSoundsAreKnownByTheirRole) {
    struct Case {
        const char* announced;
        const char* own;
        bool expected;
    };
    for (const auto& [announced, own, expected] : std::vector<Case>{{"Notification", "", true},
                                                                    {"event", "", true},
                                                                    {"NOTIFICATION", "Music", true},
                                                                    {"", "Event", true},
                                                                    {"Music", "event", false},
                                                                    {"", "", false},
                                                                    {"Music", "", false},
                                                                    {"events", "", false},
                                                                    {"even", "", false},
                                                                    {"Communication", "", false},
                                                                    {"Notification ", "", false}})
        EXPECT_EQ(StreamRules::isNotification(announced, own), expected) << announced << '/' << own;
}

TEST(StreamRules, TheKindFollowsFromWhoPlays) {
    EXPECT_EQ(StreamRules::kindOf(true, std::nullopt), StreamKind::notification);
    EXPECT_EQ(StreamRules::kindOf(false, std::nullopt), StreamKind::player);
    EXPECT_EQ(StreamRules::kindOf(false, player(1)), StreamKind::player);
    EXPECT_EQ(StreamRules::kindOf(false, player(1, true)), StreamKind::page);
}

TEST(StreamRules, FurtherProcessesFollowAChangeUpToFullVolume) {
    struct Case {
        WantedVolume change;
        std::optional<StreamPlayer> changed;
        std::optional<StreamPlayer> other;
        WantedVolume expected;
    };
    const WantedVolume half{0.125F, std::nullopt};
    const WantedVolume mute{std::nullopt, true};
    const std::vector<Case> cases{{half, player(1), player(2), half},
                                  {mute, player(1), player(2), mute},
                                  {{1.728F, false}, player(1), player(2), kFullVolume},
                                  {half, player(1), player(1), nothing},
                                  {half, std::nullopt, player(2), nothing},
                                  {half, player(1), std::nullopt, nothing}};
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const auto& [change, changed, other, expected] = cases[i];
        EXPECT_EQ(StreamRules::followingChange(change, changed, other), expected) << i;
    }
}

TEST(StreamRules, WhatAPageHasIsItsOwn) {
    const WantedVolume half{0.125F, false};
    EXPECT_EQ(StreamRules::lastingPart(half, player(1)), half);
    EXPECT_EQ(StreamRules::lastingPart(half, std::nullopt), half);
    EXPECT_EQ(StreamRules::lastingPart(half, player(1, true)), nothing);
}

TEST(StreamRules, OnlyAProcessTheKernelVouchesForMayPlaySampleSounds) {
    ProgramProcess process;
    process.proof = StreamProcess::Proof::claim;
    EXPECT_FALSE(StreamRules::mayBeSampleSound("Tonvale", process));
    process.proof = StreamProcess::Proof::peer;
    EXPECT_TRUE(StreamRules::mayBeSampleSound("Tonvale", process));
    EXPECT_FALSE(StreamRules::mayBeSampleSound("tonvale", process));
}
