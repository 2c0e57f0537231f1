#include "model/PluginCommands.h"

#include "comm/MVComm.h"
#include "comm/MVCommSocketPath.h"
#include "platform/loop/RunLoop.h"
#include "support/ManualClock.h"
#include "support/ScriptedPlugin.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

class PluginCommandsTest : public testing::Test {
  protected:
    PluginCommandsTest() {
        EXPECT_TRUE(comm_.setupPluginConnectionWithCallBack([](const MVCommActivityMessage*) {}));
        plugin_.emplace(MVCommMainSocketPath());
        EXPECT_TRUE(support::waitUntil([&] { return !comm_.connectionProcesses().isEmpty(); }));
    }

    /// "type,value" of what is sent from now until the clock is there.
    std::string sentWithin(std::chrono::milliseconds time) {
        clock_.advance(time);
        loop_.turn();
        const MVCommConsoleMessage last{++marker_, 0, 0, 0};
        comm_.sendMessage(&last);
        std::string text;
        EXPECT_TRUE(support::waitUntil([&] {
            for (const MVCommConsoleMessage& command : plugin_->takeCommands()) {
                if (command.type == marker_)
                    return true;
                text += std::to_string(command.type) + "," + std::to_string(command.value) + " ";
            }
            return false;
        }));
        return text;
    }

    support::ManualClock clock_;
    platform::RunLoop loop_;
    MVComm comm_;
    PluginCommands commands_{comm_};
    std::optional<support::ScriptedPlugin> plugin_;
    std::int32_t marker_ = 1000;
};

} // namespace

TEST_F(PluginCommandsTest, TheLastVolumeOfAQuickChangeToAndFroArrives) {
    commands_.setVolume(1, 50);
    commands_.setVolume(1, 51);
    commands_.setVolume(1, 50);
    EXPECT_EQ(sentWithin(0ms), "9,50 9,51 ") << "what the servers make of it";
    EXPECT_EQ(sentWithin(149ms), "");
    EXPECT_EQ(sentWithin(1ms), "9,50 ");
    EXPECT_EQ(sentWithin(10s), "") << "once";
}

TEST_F(PluginCommandsTest, WhatIsSetAgainAtTheEndOfAGestureArrivesToo) {
    for (const int percent : {10, 9, 10, 10})
        commands_.setVolume(1, percent);
    EXPECT_EQ(sentWithin(0ms), "9,10 9,9 ");
    EXPECT_EQ(sentWithin(150ms), "9,10 ");
}

TEST_F(PluginCommandsTest, NothingIsRepeatedThatANewerCommandHasReplaced) {
    commands_.setMute(1, true);
    commands_.setMute(1, false);
    commands_.setMute(1, true);
    EXPECT_EQ(sentWithin(0ms), "10,1 10,0 ");
    EXPECT_EQ(sentWithin(100ms), "");
    commands_.setMute(1, false);
    EXPECT_EQ(sentWithin(0ms), "10,0 ");
    EXPECT_EQ(sentWithin(149ms), "");
    EXPECT_EQ(sentWithin(1ms), "10,0 ") << "it followed its like within the margin";
    commands_.setMute(1, true);
    EXPECT_EQ(sentWithin(10s), "10,1 ");
}

TEST_F(PluginCommandsTest, AnIdenticalRepetitionIsNotSentTwice) {
    commands_.setVolume(1, 50);
    commands_.setVolume(1, 50);
    commands_.setVolume(2, 50);
    EXPECT_EQ(sentWithin(0ms), "9,50 9,50 ");
    EXPECT_EQ(sentWithin(10s), "");
}

TEST_F(PluginCommandsTest, EachChangeOfTheIgnoreListIsReported) {
    commands_.ignoreListChanged();
    EXPECT_EQ(sentWithin(0ms), "11,0 ");
    commands_.ignoreListChanged();
    EXPECT_EQ(sentWithin(0ms), "") << "dropped";
    EXPECT_EQ(sentWithin(150ms), "11,0 ");
}
