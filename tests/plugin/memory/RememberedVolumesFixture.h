#pragma once

#include "plugin/memory/RememberedVolumes.h"

#include "support/ManualClock.h"

#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

inline constexpr std::uint32_t pid = 10;
inline constexpr std::uint32_t twin = 11; // of the same name
inline constexpr WantedVolume nothing{};
inline constexpr WantedVolume full{1.0F, false};

inline WantedVolume volume(int percent) {
    return {gainOfPercent(percent), std::nullopt};
}

inline WantedVolume both(int percent, bool muted) {
    return {gainOfPercent(percent), muted};
}

/// A program "player", perhaps twice, whose host does as it is told.
class RememberedVolumesFixture : public testing::Test {
  protected:
    support::ManualClock clock_;
    RememberedVolumes remembered_{"own"};
    NamedSettings newer_;
    std::vector<RememberedVolumes::Program> programs_{{pid, "player", {}}};
    std::vector<RememberedVolumes::Consequence> consequences_;

    static Preferences says(const ProgramSetting& setting, IgnoredNames ignored = {}) {
        Preferences preferences{true, {}, std::move(ignored)};
        preferences.file = "own";
        if (!setting.isPlain())
            preferences.programs["player"] = setting;
        return preferences;
    }

    /// Returns what the first program is to have now.
    WantedVolume read(Preferences preferences) {
        consequences_ = remembered_.read(std::move(preferences), programs_, clock_.now());
        for (std::size_t i = 0; i < consequences_.size(); ++i)
            programs_[i].wanted.merge(consequences_[i].wanted);
        return consequences_.empty() ? nothing : consequences_[0].wanted;
    }
    WantedVolume read(const ProgramSetting& setting) { return read(says(setting)); }

    void command(const WantedVolume& change) {
        programs_[0].wanted.merge(change);
        remembered_.commanded(programs_[0], change, clock_.now());
    }

    /// The first word of an application, or another of the same; answers what the first program is
    /// to have now.
    WantedVolume tell(const ProgramSetting& setting, std::set<std::string, std::less<>> news = {},
                      const std::string& file = "own") {
        Preferences preferences = says(setting);
        preferences.file = file;
        preferences.seen = {"player"};
        const auto outcome =
            remembered_.told({std::move(preferences), std::move(news)}, programs_, clock_.now());
        newer_ = outcome.newer;
        programs_[0].wanted.merge(outcome.consequences[0].wanted);
        return outcome.consequences[0].wanted;
    }

    void restartApplication() {
        remembered_.applicationChanged(false);
        remembered_.applicationChanged(true);
    }

    std::optional<ProgramSetting> changeElsewhere(const WantedVolume& change,
                                                  bool connected = true) {
        const WantedVolume before = programs_[0].wanted;
        programs_[0].wanted.merge(change);
        return remembered_.changedElsewhere(programs_[0], before, connected, clock_.now());
    }
};
