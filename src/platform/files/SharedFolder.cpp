#include "platform/files/SharedFolder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <random>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

constexpr const char* hiddenList = ".hidden";
constexpr std::size_t longestPath = 4096;
constexpr std::size_t longestList = 65536;

/// Takes the first name off a path; empty at its end.
std::string takeName(std::string& path) {
    const std::size_t begin = std::min(path.find_first_not_of('/'), path.size());
    const std::size_t end = std::min(path.find('/', begin), path.size());
    std::string name = path.substr(begin, end - begin);
    path.erase(0, end);
    return name;
}

FileDescriptor root() {
    return FileDescriptor(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
}

/// Whether a user who may not create a file may not remove one either.
bool isForbidden(int error) {
    return error == EACCES || error == EPERM || error == EROFS;
}

bool isInTheWay(int error) {
    return isForbidden(error) || error == EISDIR || error == ENOTEMPTY || error == EEXIST ||
           error == EBUSY;
}

bool hasLine(std::string_view text, std::string_view line) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        if (text.substr(0, end) == line)
            return true;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return false;
}

struct List {
    std::string text;
    mode_t mode = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;
};

/// Nothing when the list is not ours to write; empty when there is none.
std::optional<List> readHiddenList(int folder, uid_t user) {
    const FileDescriptor file(
        ::openat(folder, hiddenList, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file)
        return errno == ENOENT ? std::optional(List()) : std::nullopt;
    struct stat status {};
    if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_uid != user)
        return std::nullopt;
    std::string text(longestList, '\0');
    const ssize_t size = ::read(file.get(), text.data(), text.size());
    if (size < 0 || size == static_cast<ssize_t>(longestList))
        return std::nullopt;
    text.resize(static_cast<std::size_t>(size));
    return List{std::move(text), status.st_mode & ACCESSPERMS};
}

} // namespace

SharedFolder::SharedFolder(const std::string& path, SharedFolderCalls& calls)
    : calls_(calls), folder_(follow(path)) {
    error_ = folder_ ? 0 : errno;
}

/// The folder at `path`, from the root name by name, so that each link can be looked at. Empty,
/// with errno set, when there is none.
FileDescriptor SharedFolder::follow(const std::string& path) {
    constexpr int mostLinks = 40; // the kernel's bound
    FileDescriptor folder = root();
    std::string left = path;
    int links = 0;
    while (folder) {
        const std::string name = takeName(left);
        if (name.empty())
            break;
        FileDescriptor next(::openat(folder.get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
        struct stat status {};
        if (!next || ::fstat(next.get(), &status) != 0)
            return {};
        if (!S_ISLNK(status.st_mode)) {
            errno = ENOTDIR;
            folder = S_ISDIR(status.st_mode) ? std::move(next) : FileDescriptor();
            continue;
        }
        errno = ELOOP;
        const bool isTrusted = status.st_uid == calls_.user() || status.st_uid == 0;
        if (!isTrusted || ++links > mostLinks || !readLink(next.get(), left))
            return {};
        if (left.starts_with('/'))
            folder = root();
    }
    return folder;
}

/// Puts what a link holds before the rest of the path.
bool SharedFolder::readLink(int link, std::string& rest) {
    std::array<char, longestPath> target;
    const ssize_t size = ::readlinkat(link, "", target.data(), target.size());
    if (size <= 0)
        return false;
    rest.insert(0, target.data(), static_cast<std::size_t>(size));
    return true;
}

SharedFolder::Outcome SharedFolder::put(const std::string& name, std::string_view bytes,
                                        mode_t mode) {
    if (!folder_)
        return {.writing = error_};
    const int former = makeRoom(name.c_str());
    if (former > 0)
        return {.removing = former};
    const bool isThere = former == 0;
    Outcome outcome;
    std::string temporary = "." + name + ".new";
    FileDescriptor file = createTemporary(temporary);
    if (!file)
        return isThere && isForbidden(errno) ? Outcome{.removing = errno}
                                             : Outcome{.writing = errno};
    outcome.writing = write(std::move(file), bytes, mode, outcome.mode);
    if (outcome.writing == 0 &&
        calls_.rename(folder_.get(), temporary.c_str(), name.c_str()) != 0) {
        const int error = errno;
        (isThere && isInTheWay(error) ? outcome.removing : outcome.writing) = error;
    }
    if (outcome.writing != 0 || outcome.removing != 0)
        calls_.remove(folder_.get(), temporary.c_str(), 0);
    return outcome;
}

/// Removes a folder that has the name, since only that cannot be replaced. 0 when something has the
/// name, -1 when nothing has, else the error.
int SharedFolder::makeRoom(const char* name) {
    struct stat status {};
    if (::fstatat(folder_.get(), name, &status, AT_SYMLINK_NOFOLLOW) != 0)
        return -1;
    if (!S_ISDIR(status.st_mode))
        return 0;
    return calls_.remove(folder_.get(), name, AT_REMOVEDIR) == 0 ? -1 : errno;
}

/// Under `name`, which a program that was killed may have left; when that cannot be had, under one
/// that nobody can foresee.
FileDescriptor SharedFolder::createTemporary(std::string& name) {
    calls_.remove(folder_.get(), name.c_str(), 0);
    FileDescriptor file(calls_.create(folder_.get(), name.c_str()));
    if (file || errno != EEXIST)
        return file;
    name += "-" + std::to_string(std::random_device()());
    return FileDescriptor(calls_.create(folder_.get(), name.c_str()));
}

/// The error, or 0. Some file systems tell only when a file is closed that they are full.
int SharedFolder::write(FileDescriptor file, std::string_view bytes, mode_t mode, int& modeError) {
    while (!bytes.empty()) {
        const ssize_t count = calls_.write(file.get(), bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            return errno;
        bytes.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    if (calls_.changeMode(file.get(), mode) != 0)
        modeError = errno;
    return calls_.close(file.release()) == 0 || errno == EINTR ? 0 : errno;
}

void SharedFolder::hide(const std::string& name) {
    struct stat status {};
    if (!folder_ || ::fstat(folder_.get(), &status) != 0 || status.st_uid != calls_.user())
        return;
    std::optional<List> list = readHiddenList(folder_.get(), calls_.user());
    if (!list || hasLine(list->text, name))
        return;
    if (!list->text.empty() && !list->text.ends_with('\n'))
        list->text += '\n';
    put(hiddenList, list->text + name + '\n', list->mode);
}

} // namespace platform
