#pragma once

#include <string>

namespace QN::log {

/// The path of a log's backup: "Tonvale.log" has "Tonvale0.log" to "Tonvale4.log", the newest
/// first.
std::string backupPath(const std::string& path, int index);

constexpr int lastBackup = 4;

/// Makes the file at `path` backup 0 and each backup the next one; the last is deleted. What cannot
/// be moved or deleted is told on standard error. Symbolic links are followed.
void rotate(const std::string& path);

} // namespace QN::log
