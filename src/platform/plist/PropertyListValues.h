#pragma once

#include <functional>
#include <optional>
#include <string>

namespace platform {

/// The values of property list nodes (PropertyListNode.h), without Qt. For a node of another type
/// each returns nothing, or makes no call. Any thread.

[[nodiscard]] bool isDictionary(void* node) noexcept;

/// The text as UTF-8.
[[nodiscard]] std::optional<std::string> textOf(void* node);

/// An integer, a real number that is finite, or a boolean, which is 1 or 0.
[[nodiscard]] std::optional<double> numberOf(void* node) noexcept;

/// Calls `take` with each node of an array, which owns it.
void forEachItem(void* array, const std::function<void(void* value)>& take);

/// The node of a key in a dictionary, which owns it; null when there is none.
void* entryOf(void* dictionary, const char* key) noexcept;

} // namespace platform
