#pragma once

#include <filesystem>
#include <string>

namespace platform {

/// Whether the file or folder carries the attribute that lets nobody change, rename or remove it
/// ("chattr +i"). False where that cannot be told, and for a link. Any thread.
[[nodiscard]] bool isImmutable(const std::filesystem::path& path);

/// Removes an extended attribute; of a link its own. True also if there is none, or if the file
/// system knows none; else false with errno set. Any thread.
[[nodiscard]] bool removeAttribute(const std::filesystem::path& path, const std::string& name);

} // namespace platform
