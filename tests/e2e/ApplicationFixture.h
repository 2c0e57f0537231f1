#pragma once

#include "comm/MVCommSocketPath.h"
#include "e2e/PreferencesFixture.h"
#include "platform/loop/UnixSocket.h"
#include "plugin/memory/Preferences.h"

#include <iterator>

/// For tests of everything together: the application's program, the plug-in's, and an audio session
/// with programs that play. Nothing but the session is started yet.
class ApplicationFixture : public PreferencesFixture {
  protected:
    /// Answers when the application serves its socket.
    void startTonvale() {
        tonvale_.emplace(std::vector<std::string>{TONVALE_PROGRAM});
        const std::string socket = MVCommMainSocketPath();
        EXPECT_TRUE(waitUntil([&] {
            return std::filesystem::exists(socket) && platform::connectUnixSocket(socket);
        })) << tonvale_->output();
    }

    /// As the desktop ends it.
    void quitTonvale() {
        EXPECT_EQ(tonvale_->stop(), 0) << tonvale_->output();
        tonvale_.reset();
    }

    /// Waits until the application's file holds this of the player.
    bool isRemembered(const ProgramSetting& setting) const {
        ProgramSetting found;
        const bool isThere = waitUntil([&] {
            std::ifstream file(own_, std::ios::binary);
            const auto preferences = parsePreferences(std::string(
                std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()));
            if (!preferences)
                return false;
            const auto entry = preferences->programs.find("stream_player");
            found = entry != preferences->programs.end() ? entry->second : ProgramSetting{};
            return found == setting;
        });
        EXPECT_TRUE(isThere) << "there is " << found.percent << (found.muted ? " muted" : "");
        return isThere;
    }

    std::optional<support::ChildProcess> tonvale_;
};
