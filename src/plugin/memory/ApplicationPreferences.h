#pragma once

#include "plugin/memory/Preferences.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

/// What the application tells over the session bus of its preferences: all that it remembers now.
/// Plain data, any thread.
struct ApplicationPreferences {
    Preferences preferences; ///< their `file` is where the application keeps them

    /// The settingsKey() of each program that a person has set, or had forgotten, since the plug-in
    /// took the application's last word.
    std::set<std::string, std::less<>> news = {};
};

/// Settings by settingsKey().
using NamedSettings = std::vector<std::pair<std::string, ProgramSetting>>;
