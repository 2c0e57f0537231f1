#pragma once

#include "platform/volumes/MountTable.h"

#include <filesystem>
#include <optional>
#include <string>

namespace platform {

/// Disk images: volumes whose device the kernel makes out of a file, a loop device. Asks the kernel
/// only, no tool. `sysfs` is another place in tests. Any thread.

/// The mount point of the volume that a file or folder lies on, links followed; empty if unknown.
[[nodiscard]] std::string volumePathFor(const std::filesystem::path& path);

/// Whether the volume that holds the file or folder is both mounted read-only and local.
[[nodiscard]] bool isOnReadOnlyLocalVolume(const std::filesystem::path& path);

/// The file of the disk image that is mounted at or around `volumePath`: of the first mounted image
/// whose mount point is not longer than `volumePath` and begins it. Nothing if there is none.
[[nodiscard]] std::optional<std::string>
diskImagePathForVolumePath(const std::string& volumePath, const MountTable& mounts = MountTable(),
                           const std::filesystem::path& sysfs = "/sys");

/// A mounted disk image.
struct DiskImage {
    std::string mountPoint;
    std::string file;   ///< the image's
    std::string device; ///< "loop0", the loop device
    std::string volume; ///< the same, or "loop0p1", the partition that is mounted
};

/// The disk image that is mounted at exactly that place.
[[nodiscard]] std::optional<DiskImage> diskImageAt(const std::string& mountPoint,
                                                   const MountTable& mounts = MountTable(),
                                                   const std::filesystem::path& sysfs = "/sys");

} // namespace platform
