#pragma once

#include <string>
#include <vector>

namespace platform {

/// What files may tell about a person and their machine. An unknown fact is empty. Any thread.
struct PersonalFacts {
    std::string home;     ///< the home folder's path
    std::string userName; ///< of the account
    std::string realName; ///< of the account's owner
    std::string hostName;
    std::vector<std::string> machineIds;
    std::vector<std::string> serialNumbers; ///< of the machine and of what is plugged into it

    /// `root` is the folder that holds /etc, /proc and /sys, for a machine other than this one.
    [[nodiscard]] static PersonalFacts ofThisMachine(const std::string& root = {});
};

} // namespace platform
