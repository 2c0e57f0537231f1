#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// One mounted file system, as the kernel lists it.
struct Mount {
    int number = 0;         ///< the kernel's, see MountTable::holding()
    std::string device;     ///< "7:0", major and minor
    std::string type;       ///< "iso9660", "fuse.sshfs"
    std::string mountPoint; ///< absolute, as it is, with blanks
};

/// What was mounted in this process's view when the table was read, in the kernel's order.
/// Immutable; any thread.
class MountTable {
  public:
    /// Reads `file`, in the format of /proc/PID/mountinfo; lines of another format are left out.
    explicit MountTable(const std::filesystem::path& file = "/proc/self/mountinfo");

    [[nodiscard]] const std::vector<Mount>& mounts() const noexcept { return mounts_; }

    /// The mount that a file or folder lies on, links followed. Nothing if there is no such file,
    /// or if it was mounted later.
    [[nodiscard]] std::optional<Mount> holding(const std::filesystem::path& path) const;

    /// The uppermost mount at exactly that place.
    [[nodiscard]] std::optional<Mount> at(const std::string& mountPoint) const;

  private:
    std::vector<Mount> mounts_;
};

/// Whether a file system of that type is on this machine and not behind a network. Those that a
/// program serves (FUSE) could lead anywhere, so they are not; but a block device's is, however it
/// is served.
[[nodiscard]] bool isLocalFileSystem(const std::string& type);

} // namespace platform
