#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The names of the programs that get no item, for the application and its plug-ins. Plain data,
/// any thread.

/// The built-in ones, UTF-8, in no order that matters.
std::span<const std::string_view> builtInIgnoredNames() noexcept;

/// The ignore list as the preferences hold it.
struct IgnoredNames {
    std::vector<std::string> custom;          ///< the person's own names
    std::vector<std::string> disabledBuiltIn; ///< built-in ones, exactly, that do not count

    bool operator==(const IgnoredNames&) const = default;

    /// Whether a program of this name, which is not what is displayed, gets no item. Case does not
    /// count, whatever the locale, and what a property list cannot hold is as it makes it.
    bool contains(std::string_view name) const;
};
