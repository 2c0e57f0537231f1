#include "platform/files/StagedCopy.h"

#include "platform/files/SetAside.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <system_error>
#include <unistd.h>

namespace platform {

namespace fs = std::filesystem;

namespace {

constexpr mode_t permissions = 0777;
constexpr mode_t ownOnly = 0700;
constexpr std::string_view randomPart = ".XXXXXX";

[[noreturn]] void fail(const char* what, const fs::path& path, int error) {
    throw fs::filesystem_error(what, path, std::error_code(error, std::generic_category()));
}

void check(bool isDone, const char* what, const fs::path& path) {
    if (!isDone)
        fail(what, path, errno);
}

/// ".Name.app"
std::string stagingName(const fs::path& place) {
    return std::string(".").append(std::string(place.filename()));
}

FileDescriptor openFolder(const fs::path& folder) {
    return FileDescriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

void synchronize(const fs::path& folder) {
    const FileDescriptor opened = openFolder(folder);
    // Some file systems have nothing to synchronise in a folder.
    check(opened && (::fsync(opened.get()) == 0 || errno == EINVAL), "fsync", folder);
}

/// A folder that a run at work holds is locked.
void removeLeftover(const fs::path& folder) {
    const FileDescriptor opened = openFolder(folder);
    struct stat status {};
    std::error_code error;
    if (opened && ::fstat(opened.get(), &status) == 0 && status.st_uid == ::geteuid() &&
        ::flock(opened.get(), LOCK_EX | LOCK_NB) == 0)
        fs::remove_all(folder, error);
}

void removeLeftovers(const fs::path& place) {
    const std::string start = stagingName(place).append(".");
    std::error_code error;
    for (fs::directory_iterator each(place.parent_path(), error), end; each != end;
         each.increment(error)) {
        const std::string name = each->path().filename();
        if (name.starts_with(start) && name.size() == start.size() + randomPart.size() - 1)
            removeLeftover(each->path());
    }
}

void checkFreeSpace(const fs::path& source, const fs::path& folder) {
    struct statvfs volume {};
    check(::statvfs(folder.c_str(), &volume) == 0, "statvfs", folder);
    const bool isKnown = volume.f_blocks > 0;
    if (isKnown && sizeOnDisk(source) > std::uintmax_t{volume.f_bavail} * volume.f_frsize)
        fail("copy", folder, ENOSPC);
}

void copyBytes(int from, int to, const fs::path& source, const fs::path& copy) {
    std::array<char, std::size_t{1} << 16U> buffer{};
    for (;;) {
        const ssize_t size = ::read(from, buffer.data(), buffer.size());
        check(size >= 0, "read", source);
        if (size == 0)
            return;
        for (ssize_t done = 0; done < size;) {
            const ssize_t written =
                ::write(to, buffer.data() + done, static_cast<std::size_t>(size - done));
            check(written > 0, "write", copy);
            done += written;
        }
    }
}

void copyFile(const fs::path& source, const fs::path& copy) {
    const FileDescriptor from(
        ::open(source.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    check(from && ::fstat(from.get(), &status) == 0, "open", source);
    const FileDescriptor to(
        ::open(copy.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, ownOnly));
    check(static_cast<bool>(to), "open", copy);
    copyBytes(from.get(), to.get(), source, copy);
    const std::array<timespec, 2> times{status.st_atim, status.st_mtim};
    check(::fchmod(to.get(), status.st_mode & permissions) == 0 &&
              ::futimens(to.get(), times.data()) == 0 && ::fsync(to.get()) == 0,
          "fsync", copy);
}

void copyTree(const fs::path& source, const fs::path& copy);

void copyEntry(const fs::directory_entry& entry, const fs::path& copy) {
    switch (entry.symlink_status().type()) {
    case fs::file_type::symlink:
        fs::copy_symlink(entry.path(), copy);
        break;
    case fs::file_type::directory:
        copyTree(entry.path(), copy);
        break;
    case fs::file_type::regular:
        copyFile(entry.path(), copy);
        break;
    default:
        fail("copy", entry.path(), EINVAL);
    }
}

/// The folder gets its mode last: it may be one that cannot be written.
void copyTree(const fs::path& source, const fs::path& copy) {
    struct stat status {};
    check(::lstat(source.c_str(), &status) == 0, "stat", source);
    if (!S_ISDIR(status.st_mode))
        fail("copy", source, ENOTDIR);
    check(::mkdir(copy.c_str(), ownOnly) == 0, "mkdir", copy);
    for (const fs::directory_entry& entry : fs::directory_iterator(source))
        copyEntry(entry, copy / entry.path().filename());
    check(::chmod(copy.c_str(), status.st_mode & permissions) == 0, "chmod", copy);
    synchronize(copy);
}

} // namespace

std::uintmax_t sizeOnDisk(const fs::path& folder) {
    constexpr std::uintmax_t block = 4096;
    std::uintmax_t size = block;
    std::error_code error;
    for (fs::recursive_directory_iterator each(folder, error), end; each != end;
         each.increment(error)) {
        const bool isFile = each->symlink_status(error).type() == fs::file_type::regular;
        const std::uintmax_t bytes = isFile ? each->file_size(error) : 0;
        if (!error)
            size += block + (bytes + block - 1) / block * block;
    }
    return size;
}

StagedCopy::StagedCopy(const fs::path& source, fs::path place) : place_(std::move(place)) {
    const fs::path parent = place_.parent_path();
    removeLeftovers(place_);
    checkFreeSpace(source, parent);
    std::string folder = parent / stagingName(place_).append(randomPart);
    check(::mkdtemp(folder.data()) != nullptr, "mkdir", folder);
    folder_ = folder;
    lock_ = openFolder(folder_);
    try {
        check(static_cast<bool>(lock_), "open", folder_);
        ::flock(lock_.get(), LOCK_EX | LOCK_NB); // not every file system can
        copyTree(source, folder_ / place_.filename());
        synchronize(folder_);
    } catch (...) {
        std::error_code error;
        fs::remove_all(folder_, error);
        throw;
    }
}

StagedCopy::~StagedCopy() {
    std::error_code error;
    fs::remove_all(folder_, error);
}

void StagedCopy::takePlace() {
    check(renameToFreePlace(folder_ / place_.filename(), place_), "rename", place_);
    if (const FileDescriptor parent = openFolder(place_.parent_path()))
        ::fsync(parent.get());
}

} // namespace platform
