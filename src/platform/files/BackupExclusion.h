#pragma once

#include <string>

namespace platform {

/// Folders excluded from backups. The mark is the file CACHEDIR.TAG in the folder, which common
/// backup tools recognise. Any thread.

/// Whether the folder itself has a valid mark; its parents do not count.
[[nodiscard]] bool isExcludedFromBackups(const std::string& folder);

/// Adds the mark to the folder, unless it has one. False with errno set if it cannot be written,
/// EEXIST if another file has its name.
[[nodiscard]] bool excludeFromBackups(const std::string& folder);

} // namespace platform
