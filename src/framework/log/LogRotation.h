#pragma once

#include <string>

namespace QN::log {

/// The path of a log's backup: "Tonvale.log" has "Tonvale0.log" to "Tonvale4.log", the newest
/// first.
std::string backupPath(const std::string& path, int index);

constexpr int lastBackup = 4;

/// Whether there is a file, as far as the process may know. Symbolic links are followed.
bool fileExists(const std::string& path) noexcept;

/// The path of the file that is rotated: `path`, or what it leads to if it is a symbolic link.
std::string rotatedFile(const std::string& path);

/// Makes the file at `path` backup 0 and each backup the next one; the last is deleted. What cannot
/// be moved or deleted is told on standard error. Symbolic links are followed.
void rotate(const std::string& path);

} // namespace QN::log
