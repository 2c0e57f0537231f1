#pragma once

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>

/// The codes of the tool's reply and its exit status. 1, 2 and 7 concern the tool as a whole, every
/// other one an item of its arguments.
enum class InstallCode : int {
    success = 0,
    wrongArguments = 1,
    unsafePlace = 2, ///< of the tool itself
    refused = 3,     ///< the item is not one that this tool touches
    badSource = 4,   ///< it cannot be read, or is not what a bundle consists of
    noRoom = 5,      ///< the disk or the quota is full, to install
    notWritten = 6,  ///< any other failure at the destination of an installation
    internal = 7,    ///< nobody let the tool go on, another one is at work, or no memory
    notRemoved = 8,
    unsafeTarget = 9, ///< somebody else may change a folder that root would change
};

/// Why the tool, or an item, has failed: what() is a line for the system log.
class InstallFailure : public std::runtime_error {
  public:
    InstallFailure(InstallCode code, const std::string& text)
        : std::runtime_error(text), code_(code) {}

    [[nodiscard]] InstallCode code() const noexcept { return code_; }

  private:
    InstallCode code_;
};

/// The failure that errno tells of, at a path; `code` unless the disk is full.
[[nodiscard]] inline InstallFailure failureAt(const std::string& path, InstallCode code) {
    const int error = errno;
    const bool isFull = error == ENOSPC || error == EDQUOT || error == EFBIG;
    return {isFull && code == InstallCode::notWritten ? InstallCode::noRoom : code,
            path + ": " + std::generic_category().message(error)};
}
