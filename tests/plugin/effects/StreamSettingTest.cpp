#include "plugin/effects/StreamSetting.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

TEST(StreamSetting, IsReadAsEveryMixerWritesIt) {
    const StreamSetting expected{false, {0.125F, 0.25F}, {"FL", "FR"}, ""};
    for (const char* const text :
         {R"({"mute":false,"volumes":[0.125,0.25],"channels":["FL","FR"]})",
          R"({ "channels": [ "FL", "FR" ], "volumes": [ 0.125000, 2.5e-1 ], "mute": false })",
          R"({"mute" = false "volumes" = [0.125 0.25] "channels" = ["FL" "FR"]} # relaxed)"}) {
        EXPECT_EQ(parseStreamSetting(text), expected) << text;
    }
}

TEST(StreamSetting, WhatItReadsIsWhatItWrites) {
    for (const StreamSetting& setting :
         {StreamSetting{}, StreamSetting{true, {}, {}, ""},
          StreamSetting{std::nullopt, {1.0F}, {}, ""},
          StreamSetting{false, {1e-6F, 0.3F}, {"FL", "FR"}, ""},
          StreamSetting{false, {0.0F}, {"MONO"}, R"("volume":1.0,)"}})
        EXPECT_EQ(parseStreamSetting(formatStreamSetting(setting)), setting);
    EXPECT_EQ(formatStreamSetting({true, {1.0F, 0.000001F}, {"FL", "FR"}, ""}),
              R"({"mute":true,"volumes":[1.0,0.000001],"channels":["FL","FR"]})");
}

TEST(StreamSetting, UnknownMembersAreKept) {
    const auto setting = parseStreamSetting(
        R"({"target-node":"a \"b\" }","mute":true,"deep":{"x":[1,{"y":"]"}]},"volumes":[0.5]})");
    ASSERT_TRUE(setting);
    EXPECT_EQ(setting->mute, true);
    EXPECT_THAT(setting->volumes, ElementsAre(0.5F));
    EXPECT_EQ(
        formatStreamSetting(*setting),
        R"({"target-node":"a \"b\" }","deep":{"x":[1,{"y":"]"}]},"mute":true,"volumes":[0.5]})");
}

TEST(StreamSetting, MembersThatMakeNoSenseAreMissing) {
    for (const char* const text :
         {R"({"mute":1,"volumes":[0.5,-1],"channels":["FL","F\"R"]})",
          R"({"mute":"true","volumes":[nan],"channels":["FL",""]})",
          R"({"mute":null,"volumes":[1e99],"channels":[FL]})",
          R"({"mute":[true],"volumes":0.5,"channels":"FL"})",
          R"({"mute":{},"volumes":[[0.5]],"channels":[["FL"]]})", R"({"volumes":["0.5"]})"}) {
        const auto setting = parseStreamSetting(text);
        ASSERT_TRUE(setting) << text;
        EXPECT_EQ(*setting, StreamSetting{}) << text;
    }
    std::string many = "0";
    for (int i = 0; i < 64; ++i)
        many += ",0";
    EXPECT_THAT(parseStreamSetting(R"({"volumes":[)" + many + "]}")->volumes, IsEmpty());
}

TEST(StreamSetting, WhatIsNoWholeObjectIsNoSetting) {
    for (const char* const text :
         {"", "{", "}", "[]", "true", "\"", "{\"mute", R"({"mute":true)", R"({"mute":true])",
          R"({"x":"never closed})", R"({"volumes":[0.5)", R"({"volumes":[0.5})", R"({{"a":1}:2})",
          "{\"x\":\"\x01\"}", R"({"x":{"y":1)", "\xFF\xFE"})
        EXPECT_FALSE(parseStreamSetting(text)) << text;
    EXPECT_FALSE(parseStreamSetting("{" + std::string(5000, ' ') + "}"));
    EXPECT_FALSE(parseStreamSetting(std::string(4000, '[')));
}

TEST(StreamSetting, TheSameEffectDoesNotDependOnRoundingOrOthers) {
    const StreamSetting setting{false, {0.1F, 0.2F}, {"FL", "FR"}, ""};
    EXPECT_TRUE(haveSameEffect(setting, {false, {0.100001F, 0.2F}, {}, R"("volume":1.0,)"}));
    EXPECT_FALSE(haveSameEffect(setting, {true, {0.1F, 0.2F}, {}, ""}));
    EXPECT_FALSE(haveSameEffect(setting, {false, {0.1F, 0.21F}, {}, ""}));
    EXPECT_FALSE(haveSameEffect(setting, {false, {0.1F}, {}, ""}));
}
