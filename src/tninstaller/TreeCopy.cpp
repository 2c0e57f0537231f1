#include "tninstaller/TreeCopy.h"

#include "tninstaller/DirectoryReader.h"
#include "tninstaller/FileMode.h"
#include "tninstaller/GuardedFolder.h"
#include "tninstaller/InstallFailure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

using platform::FileDescriptor;

namespace {

constexpr mode_t plainMode = 0644;
constexpr mode_t executableMode = 0755;
constexpr std::size_t partSize = std::size_t{256} << 10U;

struct Level {
    DirectoryReader source;
    FileDescriptor target;
    std::string name;
};

FileDescriptor makeFolder(int parent, const std::string& name) {
    FileDescriptor folder;
    if (::mkdirat(parent, name.c_str(), S_IRWXU) == 0)
        folder.reset(
            ::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder)
        throw failureAt(name, InstallCode::notWritten);
    return folder;
}

void finish(int descriptor, mode_t mode, const std::string& name) {
    if (!setOwnMode(descriptor, mode))
        throw failureAt(name, InstallCode::notWritten);
}

void writeAll(int descriptor, const char* bytes, std::size_t size, const std::string& name) {
    while (size > 0) {
        const ssize_t written = ::write(descriptor, bytes, size);
        if (written < 0 && errno != EINTR)
            throw failureAt(name, InstallCode::notWritten);
        if (written > 0) {
            bytes += written;
            size -= static_cast<std::size_t>(written);
        }
    }
}

} // namespace

TreeCopy::TreeCopy(const Caller& caller, const Limits& limits)
    : caller_(caller), limits_(limits), part_(partSize) {}

FileDescriptor TreeCopy::openSource(int folder, const std::string& name) const {
    const Caller::Identity identity(caller_);
    FileDescriptor item(
        ::openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!item)
        throw failureAt(name, InstallCode::badSource);
    return item;
}

FileDescriptor TreeCopy::openRoot(const std::string& source) const {
    FileDescriptor folder(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    for (const std::string& part : partsOf(source)) {
        const Caller::Identity identity(caller_);
        folder.reset(
            ::openat(folder.get(), part.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!folder)
            throw failureAt(source, InstallCode::badSource);
    }
    return openSource(folder.get(), ".");
}

void TreeCopy::copy(const std::string& source, int target, const std::string& name) {
    std::vector<Level> levels;
    levels.push_back({DirectoryReader(openRoot(source), source, InstallCode::badSource),
                      makeFolder(target, name), name});
    while (!levels.empty()) {
        const char* const next = levels.back().source.next();
        if (next == nullptr) {
            finish(levels.back().target.get(), executableMode, levels.back().name);
            levels.pop_back();
            continue;
        }
        const std::string entry = next;
        countEntry(entry);
        FileDescriptor item = openSource(levels.back().source.descriptor(), entry);
        struct stat status {};
        if (::fstat(item.get(), &status) != 0)
            throw failureAt(entry, InstallCode::badSource);
        if (S_ISREG(status.st_mode)) {
            copyFile(item.get(), levels.back().target.get(), entry);
        } else if (S_ISDIR(status.st_mode) && levels.size() < limits_.depth) {
            FileDescriptor folder = makeFolder(levels.back().target.get(), entry);
            levels.push_back({DirectoryReader(std::move(item), entry, InstallCode::badSource),
                              std::move(folder), entry});
        } else {
            throw InstallFailure(InstallCode::badSource,
                                 entry + ": neither a file nor a folder, or nested too deep");
        }
    }
}

void TreeCopy::copyFile(int from, int target, const std::string& name) {
    struct stat status {};
    const FileDescriptor copy(::openat(target, name.c_str(),
                                       O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                       S_IRUSR | S_IWUSR));
    if (!copy)
        throw failureAt(name, InstallCode::notWritten);
    while (true) {
        const ssize_t size = ::read(from, part_.data(), part_.size());
        if (size == 0)
            break;
        if (size < 0 && errno == EINTR)
            continue;
        if (size < 0)
            throw failureAt(name, InstallCode::badSource);
        countBytes(static_cast<std::uint64_t>(size), name);
        writeAll(copy.get(), part_.data(), static_cast<std::size_t>(size), name);
    }
    if (::fstat(from, &status) != 0)
        throw failureAt(name, InstallCode::badSource);
    const bool isExecutable = (status.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0;
    finish(copy.get(), isExecutable ? executableMode : plainMode, name);
}

void TreeCopy::countEntry(const std::string& name) {
    if (++entries_ > limits_.entries)
        throw InstallFailure(InstallCode::badSource, name + ": too many files");
}

void TreeCopy::countBytes(std::uint64_t bytes, const std::string& name) {
    bytes_ += bytes;
    if (bytes_ > limits_.bytes)
        throw InstallFailure(InstallCode::badSource, name + ": too many bytes");
}
