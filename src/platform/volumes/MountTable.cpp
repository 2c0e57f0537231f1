#include "platform/volumes/MountTable.h"

#include "platform/base/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <string_view>

namespace platform {

namespace {

/// The kernel writes blanks, line ends and backslashes as a backslash and three octal digits.
std::string unescaped(const std::string& field) {
    constexpr std::size_t length = 4;
    constexpr unsigned octal = 8;
    const auto isOctal = [](char each) { return each >= '0' && each <= '7'; };
    std::string text;
    for (std::size_t i = 0; i < field.size(); ++i) {
        const std::string_view digits = std::string_view(field).substr(i + 1, length - 1);
        if (field[i] != '\\' || digits.size() != length - 1 ||
            !std::all_of(digits.begin(), digits.end(), isOctal)) {
            text += field[i];
            continue;
        }
        unsigned code = 0;
        for (const char digit : digits)
            code = code * octal + static_cast<unsigned>(digit - '0');
        text += static_cast<char>(code);
        i += length - 1;
    }
    return text;
}

/// "36 35 98:0 /root /mount/point rw,noatime master:1 - ext3 /dev/root rw"
std::optional<Mount> readLine(const std::string& line) {
    std::istringstream fields(line);
    Mount mount;
    std::string parent;
    std::string root;
    std::string place;
    fields >> mount.number >> parent >> mount.device >> root >> place;
    std::string optional;
    while (fields >> optional && optional != "-") {
    }
    if (!(fields >> mount.type))
        return std::nullopt;
    mount.mountPoint = unescaped(place);
    return mount;
}

/// The number of the mount that an open file lies on; 0 if it cannot be told.
int mountNumber(const FileDescriptor& file) {
    std::ifstream information(std::string("/proc/self/fdinfo/").append(std::to_string(file.get())));
    std::string word;
    int number = 0;
    while (information >> word) {
        if (word == "mnt_id:" && information >> number)
            return number;
    }
    return 0;
}

constexpr std::array networkTypes{"nfs",   "nfs4",      "cifs",   "smb3",    "smbfs",
                                  "ncpfs", "afs",       "coda",   "ceph",    "9p",
                                  "davfs", "glusterfs", "lustre", "virtiofs"};

} // namespace

MountTable::MountTable(const std::filesystem::path& file) {
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        if (auto mount = readLine(line))
            mounts_.push_back(*std::move(mount));
    }
}

std::optional<Mount> MountTable::holding(const std::filesystem::path& path) const {
    const FileDescriptor file(::open(path.c_str(), O_PATH | O_CLOEXEC));
    if (!file)
        return std::nullopt;
    const auto found = std::ranges::find(mounts_, mountNumber(file), &Mount::number);
    return found != mounts_.end() ? std::optional(*found) : std::nullopt;
}

std::optional<Mount> MountTable::at(const std::string& mountPoint) const {
    const auto found = std::find_if(mounts_.rbegin(), mounts_.rend(), [&](const Mount& each) {
        return each.mountPoint == mountPoint;
    });
    return found != mounts_.rend() ? std::optional(*found) : std::nullopt;
}

bool isLocalFileSystem(const std::string& type) {
    return !type.starts_with("fuse.") && type != "fuse" &&
           std::ranges::find(networkTypes, type) == networkTypes.end();
}

} // namespace platform
