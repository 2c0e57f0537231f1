#pragma once

#include <string>

namespace QN::log {

/// The path of a log's backup: "Tonvale.log" has "Tonvale0.log" to "Tonvale4.log", the newest
/// first.
std::string backupPath(const std::string& path, int index);

inline constexpr int lastBackup = 4;

/// Whether the file exists, as far as the process may see it. Symbolic links are followed.
[[nodiscard]] bool fileExists(const std::string& path) noexcept;

/// The path of the file to rotate: `path`, or its target if it is a symbolic link.
std::string rotatedFile(const std::string& path);

/// Renames the file at `path` to backup 0, and each backup to the next one; the last is deleted.
/// Failures are printed on standard error. Symbolic links are followed.
void rotate(const std::string& path);

} // namespace QN::log
