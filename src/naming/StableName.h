#pragma once

#include <string_view>

/// What stays of the names of files and folders from one version of a program to the next, and from
/// one start to the next. The answers are parts of what they are given. Any thread.

/// The name without a version, a hash or a machine at its end, as in "player-1.2.3-x86_64". One of
/// `separators` stands before them.
std::string_view withoutVersion(std::string_view name, std::string_view separators);

/// The name of a folder without its version, build or hash. Empty when that is all that it has, and
/// for the mount of an AppImage and a temporary folder, which have another name at each start.
std::string_view stableFolderName(std::string_view folder);

/// The stable name of the nearest folder above the file that has one; or empty.
std::string_view stableFolderAbove(std::string_view path);
