#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The names of ignored programs, for the application and its plug-ins. Plain data, any thread.

/// The built-in names, UTF-8, unordered.
std::span<const std::string_view> builtInIgnoredNames() noexcept;

/// The ignore list as stored in the preferences.
struct IgnoredNames {
    std::vector<std::string> custom;          ///< the user's own names
    std::vector<std::string> disabledBuiltIn; ///< built-in names that are switched off, exact

    bool operator==(const IgnoredNames&) const = default;

    /// Whether a program with this name, which is not the displayed one, is ignored. Ignores case,
    /// in any locale, and compares names as a property list stores them.
    [[nodiscard]] bool contains(std::string_view name) const;
};
