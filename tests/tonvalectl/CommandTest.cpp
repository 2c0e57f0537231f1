#include "tonvalectl/Command.h"

#include "tonvalectl/Failure.h"
#include "tonvalectl/Verbs.h"

#include <gtest/gtest.h>

namespace {

using Words = std::vector<std::string>;

} // namespace

TEST(CommandTest, OptionsMayStandAnywhereAndAStepIsNone) {
    for (const Words& words : {Words{"set", "Music", "-5%"}, Words{"set", "--", "Music", "-5%"}}) {
        const Command command = Command::parse(words);
        EXPECT_EQ(command.verb->word, std::string("set"));
        EXPECT_EQ(command.name, "Music");
        EXPECT_EQ(command.value, "-5%");
    }
    const Command list = Command::parse({"--json", "list", "--all"});
    EXPECT_TRUE(list.json && list.all && !list.names && !list.ignored);
    EXPECT_EQ(Command::parse({"mute", "--", "--odd"}).name, "--odd");
    EXPECT_EQ(Command::parse({"default"}).value, std::nullopt);
    EXPECT_EQ(Command::parse({"default", "off"}).value, "off");
    EXPECT_EQ(Command::parse({"get", "--help"}).verb->word, std::string("--help"));
}

TEST(CommandTest, WhatMakesNoSenseIsAnErrorOfUse) {
    for (const Words& words :
         {Words{}, Words{""}, Words{"--json"}, Words{"play"}, Words{"list", "Music"}, Words{"get"},
          Words{"get", "a", "b"}, Words{"set", "Music"}, Words{"set", "--json", "Music", "5"},
          Words{"mute", "--all", "Music"}, Words{"monitor", "--names"}, Words{"list", "--every"},
          Words{"default", "1", "2"}}) {
        try {
            Command::parse(words);
            ADD_FAILURE() << (words.empty() ? "" : words.front());
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code(), ExitCode::usage);
        }
    }
}
