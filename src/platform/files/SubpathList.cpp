#include "platform/files/SubpathList.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>

namespace platform {

namespace {

constexpr int folderFlags = O_RDONLY | O_CLOEXEC | O_DIRECTORY;

struct FolderCloser {
    void operator()(DIR* folder) const noexcept { ::closedir(folder); }
};
using Folder = std::unique_ptr<DIR, FolderCloser>;

Folder openFolder(int root, const std::string& path) {
    FileDescriptor descriptor(
        ::openat(root, path.empty() ? "." : path.c_str(), folderFlags | O_NOFOLLOW));
    Folder folder(descriptor ? ::fdopendir(descriptor.get()) : nullptr);
    if (folder)
        descriptor.release();
    return folder;
}

bool isDots(std::string_view name) noexcept {
    return name == "." || name == "..";
}

/// The type as readdir(3) has it, which not every file system tells.
unsigned char typeOf(int root, const char* path, int flags) noexcept {
    struct stat status {};
    if (::fstatat(root, path, &status, flags) != 0)
        return DT_UNKNOWN;
    return static_cast<unsigned char>(IFTODT(status.st_mode));
}

} // namespace

std::optional<SubpathList> SubpathList::of(const std::string& folder) {
    FileDescriptor root(::open(folder.c_str(), folderFlags));
    if (!root)
        return std::nullopt;
    SubpathList list(std::move(root));
    std::vector<std::string> folders{{}};
    while (!folders.empty()) {
        if (!list.read(folders))
            return std::nullopt;
    }
    std::sort(list.entries_.begin(), list.entries_.end(),
              [](const Entry& left, const Entry& right) { return left.path < right.path; });
    return list;
}

/// Takes one folder from those that are left.
bool SubpathList::read(std::vector<std::string>& folders) {
    std::string prefix = std::move(folders.back());
    folders.pop_back();
    const Folder folder = openFolder(root_.get(), prefix);
    if (!folder)
        return false;
    if (!prefix.empty())
        prefix += '/';
    errno = 0;
    while (const dirent* const entry = ::readdir(folder.get())) {
        if (!isDots(entry->d_name))
            add(prefix + entry->d_name, entry->d_type, folders);
        errno = 0;
    }
    return errno == 0;
}

void SubpathList::add(std::string path, unsigned char type, std::vector<std::string>& folders) {
    if (type == DT_UNKNOWN)
        type = typeOf(root_.get(), path.c_str(), AT_SYMLINK_NOFOLLOW);
    if (type == DT_DIR)
        folders.push_back(path);
    else if (type == DT_LNK)
        type = typeOf(root_.get(), path.c_str(), 0);
    entries_.push_back({std::move(path), type == DT_DIR});
}

} // namespace platform
