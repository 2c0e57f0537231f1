#pragma once

#include "comm/MVCommCallbacks.h"
#include "platform/loop/RunLoop.h"
#include "support/ManualClock.h"
#include "support/PrivateFolder.h"
#include "support/SystemLogRecorder.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

/// A run loop on a clock moved by hand, a folder for sockets, and callbacks that record.
class CommFixture : public testing::Test, protected MVCommCallbacks {
  protected:
    CommFixture() {
        events.clear();
        levels.clear();
        duringLevel = {};
    }

    std::string socketPath(const std::string& name = "socket") const {
        return folder_.path() / name;
    }

    /// Serves what has arrived; several turns, since a connection is served the turn after it was
    /// accepted.
    void turn() {
        for (int i = 0; i < 4; ++i)
            loop_.turn();
    }

    void advance(std::chrono::milliseconds time) {
        clock_.advance(time);
        turn();
    }

    MVCommDataCallback dataCallback() const override { return &recordLevel; }
    MVCommCallback connectionCallback() const override { return &recordConnection; }
    MVCommCallback disconnectionCallback() const override { return &recordDisconnection; }

    static void recordLevel(const MVCommActivityMessage* message) {
        levels.push_back(std::to_string(message->pid) + ":" + std::to_string(message->level));
        if (duringLevel)
            duringLevel();
    }
    static void recordConnection() { events += 'C'; }
    static void recordDisconnection() { events += 'D'; }

    static inline std::string events;                // C connected, D disconnected
    static inline std::vector<std::string> levels;   // "pid:level"
    static inline std::function<void()> duringLevel; // what the data callback does besides

    support::ManualClock clock_;
    support::SystemLogRecorder log_;
    const support::PrivateFolder folder_;
    platform::RunLoop loop_;
};
