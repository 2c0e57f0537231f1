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

    /// What the window has.
    static QJsonArray items() { return jsonOf({TONVALECTL, "list", "--json"}); }

    static void control(std::vector<std::string> words) {
        words.insert(words.begin(), TONVALECTL);
        const auto result = runCommand(words);
        EXPECT_EQ(result.status, 0) << result.output;
    }

    /// Waits until the item of the player, which plays, and all its streams have this.
    static bool showsAndSounds(const Player& player, const ProgramSetting& setting) {
        std::optional<ProgramSetting> shown;
        std::vector<ShownStream> streams;
        const bool isSo = waitUntil([&] {
            shown.reset();
            for (const auto& item : items()) {
                if (item[u"pid"].toInteger() == player.pid())
                    shown = ProgramSetting{item[u"volume"].toInt(), item[u"muted"].toBool()};
            }
            streams = shownStreams(player.pid());
            return shown == setting && !streams.empty() &&
                   std::ranges::all_of(streams, [&](const ShownStream& each) {
                       return each.muted == setting.muted &&
                              std::ranges::count(each.percents, setting.percent) ==
                                  std::ssize(each.percents);
                   });
        });
        EXPECT_TRUE(isSo) << "the item shows " << (shown ? shown->percent : -1)
                          << (shown && shown->muted ? " muted" : "");
        for (const ShownStream& each : streams) {
            EXPECT_TRUE(isSo) << "a stream has " << each.percents.at(0)
                              << (each.muted ? " muted" : "");
        }
        return isSo;
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
