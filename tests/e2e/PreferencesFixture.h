#pragma once

#include "e2e/PlayerFixture.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

/// What the preferences hold of the player, and whom they ignore.
struct Entry {
    std::optional<int> percent;
    bool muted = false;
    const char* ignored = nullptr;
    const char* name = "stream_player";
};

inline std::string textOf(const Entry& entry) {
    std::string text = R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)";
    if (entry.percent || entry.muted) {
        text += std::string("<key>Apps</key><dict><key>") + entry.name + "</key><dict>";
        if (entry.percent)
            text += "<key>Volume</key><real>" + std::to_string(*entry.percent) + "</real>";
        text += entry.muted ? "<key>Mute</key><true/></dict></dict>" : "</dict></dict>";
    }
    if (entry.ignored != nullptr)
        text += std::string("<key>CustomIgnoredApps</key><array><string>") + entry.ignored +
                "</string></array>";
    return text + "</dict></plist>";
}

inline void writeFile(const std::filesystem::path& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

/// For tests of the plug-in's program and its preferences, which lie where it looks for them. The
/// plug-in and the application are yet to be started.
class PreferencesFixture : public PlayerFixture {
  protected:
    void SetUp() override {
        plugin_.reset();
        application_.reset();
    }
    void TearDown() override {
        std::filesystem::remove(own_);
        std::filesystem::remove_all(copy_.parent_path());
    }

    const std::filesystem::path own_ =
        std::filesystem::path(std::getenv("XDG_CONFIG_HOME")) / "com.quarnel.Tonvale.plist";
    const std::filesystem::path copy_ =
        std::filesystem::path(std::getenv("TONVALE_LOCAL_LIBRARY")) / "Shared" /
        "com.quarnel.Tonvale.plist";

    /// As the application does it.
    void save(const Entry& entry) const {
        writeFile(own_.string() + ".new", textOf(entry));
        std::filesystem::rename(own_.string() + ".new", own_);
    }

    /// Whether all that a new program's first stream plays within a second has this volume.
    bool beginsAt(int percent) {
        Player player(1, 600ms);
        player.play();
        const auto samples = recorder_->record(900ms).channels[0];
        const auto first = std::find_if(samples.begin(), samples.end(),
                                        [](float sample) { return sample > inaudible; });
        const double wanted = level * gainOf(percent);
        EXPECT_NEAR(first != samples.end() ? *first : 0, wanted, 1e-4);
        EXPECT_NEAR(*std::max_element(samples.begin(), samples.end()), wanted, 1e-4);
        return !HasFailure();
    }

    /// With the preferences that there are: the application, the plug-in, and `player_`, which
    /// plays.
    void startAll() {
        application_.emplace();
        startPlugin();
        startPlayer();
    }

    /// The plug-in without the application; waits until it is at work.
    void startPluginWith(const Entry& entry) {
        save(entry);
        startPlugin();
        EXPECT_TRUE(tells("sound server: connected"));
    }
};
