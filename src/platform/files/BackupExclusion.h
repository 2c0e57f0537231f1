#pragma once

#include <string>

namespace platform {

/// Folders that backups pass over. The mark is the file CACHEDIR.TAG in the folder, which the usual
/// backup tools know. Any thread.

/// Whether the folder itself holds a valid mark; those above it do not count.
bool isExcludedFromBackups(const std::string& folder);

/// Puts the mark into the folder; one that is there is left alone. False with errno set when it
/// cannot be written, EEXIST when something else has its name.
[[nodiscard]] bool excludeFromBackups(const std::string& folder);

} // namespace platform
