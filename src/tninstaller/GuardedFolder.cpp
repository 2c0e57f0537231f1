#include "tninstaller/GuardedFolder.h"

#include "tninstaller/FileMode.h"
#include "tninstaller/InstallFailure.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using platform::FileDescriptor;

namespace {

constexpr mode_t folderMode = 0755;

void expectRoots(int folder, const std::string& path) {
    struct stat status {};
    if (::fstat(folder, &status) != 0)
        throw failureAt(path, InstallCode::unsafeTarget);
    if (status.st_uid != 0 || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        throw InstallFailure(InstallCode::unsafeTarget,
                             path + ": somebody other than root may change this folder");
}

FileDescriptor openIn(int parent, const std::string& name) {
    return FileDescriptor(
        ::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

/// Where only passing through is allowed.
FileDescriptor passIn(int parent, const std::string& name) {
    return FileDescriptor(
        ::openat(parent, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

FileDescriptor makeIn(int parent, const std::string& name) {
    const bool isOurs = ::mkdirat(parent, name.c_str(), folderMode) == 0;
    if (!isOurs && errno != EEXIST)
        return {};
    FileDescriptor made = openIn(parent, name);
    if (made && isOurs && !setOwnMode(made.get(), folderMode))
        made.reset();
    return made;
}

} // namespace

std::vector<std::string> partsOf(const std::string& path) {
    if (!path.starts_with('/'))
        throw InstallFailure(InstallCode::wrongArguments, path + ": not an absolute path");
    std::vector<std::string> parts;
    for (std::size_t at = 1; at <= path.size();) {
        const std::size_t end = std::min(path.find('/', at), path.size());
        std::string part = path.substr(at, end - at);
        if (part == "." || part == "..")
            throw InstallFailure(InstallCode::wrongArguments, path + ": not a canonical path");
        if (!part.empty())
            parts.push_back(std::move(part));
        at = end + 1;
    }
    return parts;
}

GuardedFolder::GuardedFolder(FileDescriptor folder, std::string path)
    : folder_(std::move(folder)), path_(std::move(path)) {}

std::optional<GuardedFolder> GuardedFolder::walk(const std::string& path, Trust trust,
                                                 Missing missing) {
    std::string reached;
    FileDescriptor folder(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (const std::string& part : partsOf(path)) {
        if (trust == Trust::roots)
            expectRoots(folder.get(), reached + '/');
        reached += '/' + part;
        FileDescriptor next = openIn(folder.get(), part);
        if (!next && errno == EACCES)
            next = passIn(folder.get(), part);
        if (!next && errno == ENOENT && missing == Missing::make)
            next = makeIn(folder.get(), part);
        if (!next && errno == ENOENT)
            return std::nullopt;
        if (!next)
            throw failureAt(reached, InstallCode::notWritten);
        folder = std::move(next);
    }
    if (trust == Trust::roots)
        expectRoots(folder.get(), reached);
    return GuardedFolder(std::move(folder), path);
}

std::optional<GuardedFolder> GuardedFolder::find(const std::string& path, Trust trust) {
    return walk(path, trust, Missing::leave);
}

GuardedFolder GuardedFolder::make(const std::string& path, Trust trust) {
    constexpr int tries = 100; // another tool may remove at this instant what is empty
    for (int left = tries; left > 0; --left) {
        if (auto folder = walk(path, trust, Missing::make))
            return *std::move(folder);
    }
    throw InstallFailure(InstallCode::notWritten, path + ": it vanishes again and again");
}

void GuardedFolder::removeEmpty(const std::string& path, const std::string& last, Trust trust) {
    std::string folder = path;
    while (folder.size() >= last.size() && folder.starts_with(last) && folder.size() > 1) {
        const std::size_t slash = folder.rfind('/');
        const std::string parent = slash == 0 ? "/" : folder.substr(0, slash);
        const auto above = find(parent, trust);
        if (above &&
            ::unlinkat(above->descriptor(), folder.c_str() + slash + 1, AT_REMOVEDIR) != 0 &&
            errno != ENOENT)
            return; // something is left in it
        folder = parent;
    }
}
