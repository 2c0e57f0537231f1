#pragma once

#include "plugin/memory/Preferences.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

/// The application's complete preferences as sent over the session bus. Plain data, any thread.
struct ApplicationPreferences {
    Preferences preferences; ///< their `file` is where the application keeps them

    /// The settingsKey() of each program that the user has changed or forgotten since the last
    /// message that the plug-in accepted.
    std::set<std::string, std::less<>> news = {};
};

/// Settings by settingsKey().
using NamedSettings = std::vector<std::pair<std::string, ProgramSetting>>;
