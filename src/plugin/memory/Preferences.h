#pragma once

#include "plugin/volume/StreamVolume.h"
#include "settings/IgnoredNames.h"
#include "settings/ProgramSetting.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

/// The preferences used by the plug-in: plain data, any thread.

/// What the setting asks of streams.
WantedVolume wantedBy(const ProgramSetting& setting) noexcept;

/// The setting that displays a wanted volume: 100 percent and not muted if nothing is wanted.
/// Volumes above 100 percent are shown as 100.
ProgramSetting settingOf(const WantedVolume& wanted) noexcept;

struct Preferences {
    /// Whether they have ever been written; false before the first start of the application.
    bool written = false;

    /// The settings of programs, by settingsKey(); default ones are left out.
    std::map<std::string, ProgramSetting, std::less<>> programs;
    IgnoredNames ignored;

    /// The locale name of the application's message language; empty if unknown.
    std::string language = {};

    /// The known programs, by settingsKey(), and the percent at which new ones start.
    std::set<std::string, std::less<>> seen = {};
    std::optional<int> forNew = std::nullopt;

    /// The path of their file; empty for none.
    std::string file = {};

    /// The setting of a program without an entry: full volume, unless it has never been seen. A new
    /// program has the setting of its `formerKey`, else that of new programs.
    [[nodiscard]] ProgramSetting settingOfUnset(const std::string& key,
                                                const std::string& formerKey = {}) const;

    /// Whether the program `name` is on the ignore list. For a new program its `former` name counts
    /// too.
    [[nodiscard]] bool isIgnored(std::string_view name, std::string_view former = {}) const;

    bool operator==(const Preferences&) const = default;
};

/// Parses a property list, XML or binary. Invalid values count as missing. Nothing if it is damaged
/// or not a dictionary.
[[nodiscard]] std::optional<Preferences> parsePreferences(std::string_view bytes);

/// The key in the preferences of a program that checks in with `name`: the displayed name, with
/// characters replaced that XML cannot represent.
std::string settingsKey(std::string_view name);

/// The inverse, as far as possible.
std::string_view checkinNameOfKey(std::string_view key) noexcept;
