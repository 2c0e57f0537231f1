#pragma once

#include <string>

namespace platform {

/// Whether two folders hold the same tree. The paths in each are sorted by their bytes and compared
/// in pairs: both a folder, or both a file with the same content. The names within a pair need not
/// be the same, nor the owners and permissions. Links count as what they lead to, but folders
/// behind them are not entered.
///
/// False also if either is no folder, or if anything in them is neither file nor folder or cannot
/// be read. Takes memory for the names, and a fixed amount for the content. Blocks while it reads;
/// any thread.
[[nodiscard]] bool isDirectoryEqualToDirectory(const std::string& left, const std::string& right);

} // namespace platform
