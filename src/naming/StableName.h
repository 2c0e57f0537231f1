#pragma once

#include <string_view>

/// The parts of file and folder names that are the same in each version and at each start of a
/// program. The results are views into the arguments. Any thread.

/// The name without a version, a hash or a machine type at its end, as in "player-1.2.3-x86_64".
/// They are preceded by one of `separators`.
std::string_view withoutVersion(std::string_view name, std::string_view separators);

/// The name of a folder without version, build or hash. Empty if nothing else is left, and for
/// AppImage mounts and temporary folders, whose names change at each start.
std::string_view stableFolderName(std::string_view folder);

/// The stable name of the nearest folder above the file that has one; or empty.
std::string_view stableFolderAbove(std::string_view path);
