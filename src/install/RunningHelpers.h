#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

/// A process that runs the helper's program.
struct RunningHelper {
    pid_t process;
    std::filesystem::path bundle; ///< its place, links resolved; the former one if it has gone
    bool isCurrent;               ///< what it runs is still the file at that place
};

/// This user's processes whose executable lies in a bundle with that identifier. Of a bundle that
/// has been deleted, the folder's name counts instead. Any thread.
std::vector<RunningHelper> runningHelpers(const std::string& identifier,
                                          const std::string& bundleName);
