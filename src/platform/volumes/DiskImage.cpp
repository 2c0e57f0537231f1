#include "platform/volumes/DiskImage.h"

#include <fstream>
#include <iterator>
#include <sys/statvfs.h>
#include <system_error>

namespace platform {

namespace fs = std::filesystem;

namespace {

/// The file that a loop device stands on; empty if it is none, or stands on a file no longer there.
std::string backingFile(const fs::path& device) {
    std::ifstream stream(device / "loop/backing_file", std::ios::binary);
    std::string file{std::istreambuf_iterator<char>(stream), {}};
    if (!file.empty() && file.back() == '\n')
        file.pop_back();
    return file;
}

/// A partition lies in the folder of its device.
std::optional<DiskImage> imageBehind(const Mount& mount, const fs::path& sysfs) {
    std::error_code error;
    const fs::path volume = fs::canonical(sysfs / "dev/block" / mount.device, error);
    if (error)
        return std::nullopt;
    for (const fs::path& device : {volume, volume.parent_path()}) {
        if (std::string file = backingFile(device); !file.empty())
            return DiskImage{mount.mountPoint, std::move(file), device.filename(),
                             volume.filename()};
    }
    return std::nullopt;
}

} // namespace

std::string volumePathFor(const fs::path& path) {
    const auto mount = MountTable().holding(path);
    return mount ? mount->mountPoint : std::string();
}

bool isOnReadOnlyLocalVolume(const fs::path& path) {
    struct statvfs volume {};
    if (::statvfs(path.c_str(), &volume) != 0 || (volume.f_flag & ST_RDONLY) == 0)
        return false;
    const auto mount = MountTable().holding(path);
    return mount && isLocalFileSystem(mount->type);
}

std::optional<std::string> diskImagePathForVolumePath(const std::string& volumePath,
                                                      const MountTable& mounts,
                                                      const fs::path& sysfs) {
    for (const Mount& mount : mounts.mounts()) {
        // No longer than the volume's path, so only the mount point can begin the other.
        if (!volumePath.starts_with(mount.mountPoint))
            continue;
        if (auto image = imageBehind(mount, sysfs))
            return std::move(image->file);
    }
    return std::nullopt;
}

std::optional<DiskImage> diskImageAt(const std::string& mountPoint, const MountTable& mounts,
                                     const fs::path& sysfs) {
    const auto mount = mounts.at(mountPoint);
    return mount ? imageBehind(*mount, sysfs) : std::nullopt;
}

} // namespace platform
