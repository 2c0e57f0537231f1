#pragma once

#include "plugin/volume/StreamVolume.h"
#include "settings/IgnoredNames.h"
#include "settings/ProgramSetting.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

/// What the preferences hold for the plug-in: plain data, any thread.

/// What the setting asks of streams.
WantedVolume wantedBy(const ProgramSetting& setting) noexcept;

/// How what is wanted looks to a person: 100 percent and not muted where nothing is wanted. Volumes
/// that other mixers set above 100 percent look so.
ProgramSetting settingOf(const WantedVolume& wanted) noexcept;

struct Preferences {
    /// Whether they have ever been written: not before the application has run for the first time.
    bool written = false;

    /// What was set for programs, by settingsKey(); plain ones are left out.
    std::map<std::string, ProgramSetting, std::less<>> programs;
    IgnoredNames ignored;

    /// The name of the locale whose language the application's messages have; empty when it has not
    /// said.
    std::string language = {};

    /// Who has been seen before, by settingsKey(), and the percent that others begin with.
    std::set<std::string, std::less<>> seen = {};
    std::optional<int> forNew = std::nullopt;

    /// The path of the file that they come from; empty for none.
    std::string file = {};

    /// What a program has that was never set: full volume, unless it is one that has never been
    /// seen. That has what was set for it by a `formerKey`, else what new programs begin with.
    ProgramSetting settingOfUnset(const std::string& key, const std::string& formerKey = {}) const;

    /// Whether the program `name` is on the ignore list. One that was never seen or set is as its
    /// `former` name.
    bool isIgnored(std::string_view name, std::string_view former = {}) const;

    bool operator==(const Preferences&) const = default;
};

/// Reads a property list, XML or binary. Values that make no sense there count as missing. Nothing
/// when it is damaged or holds no dictionary.
std::optional<Preferences> parsePreferences(std::string_view bytes);

/// The name under which the preferences know a program that checks in with `name`: what is
/// displayed, with what XML cannot hold replaced.
std::string settingsKey(std::string_view name);

/// The opposite, as far as it can be.
std::string_view checkinNameOfKey(std::string_view key) noexcept;
