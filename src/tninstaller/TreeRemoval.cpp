#include "tninstaller/TreeRemoval.h"

#include "tninstaller/DirectoryReader.h"
#include "tninstaller/InstallFailure.h"

#include <cstdint>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

struct Level {
    DirectoryReader entries;
    std::string name;
    bool isChanged = false; // since the entries were read from the beginning
};

/// Not the device alone: a folder of the same file system can be mounted within.
using Mount = std::pair<dev_t, std::uint64_t>;

Mount mountOf(int folder, const std::string& name) {
    struct statx status {};
    if (::statx(folder, "", AT_EMPTY_PATH, STATX_TYPE | STATX_MNT_ID, &status) != 0)
        throw failureAt(name, InstallCode::notRemoved);
    const bool isKnown = (status.stx_mask & STATX_MNT_ID) != 0;
    return {makedev(status.stx_dev_major, status.stx_dev_minor), isKnown ? status.stx_mnt_id : 0};
}

/// Also one that its owner has closed.
platform::FileDescriptor openFolder(int parent, const std::string& name) {
    constexpr int how = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    platform::FileDescriptor folder(::openat(parent, name.c_str(), how));
    const platform::FileDescriptor closed(
        folder || errno != EACCES
            ? -1
            : ::openat(parent, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    const std::string path = "/proc/self/fd/" + std::to_string(closed.get());
    if (closed && ::chmod(path.c_str(), S_IRWXU) == 0)
        folder.reset(::openat(parent, name.c_str(), how));
    return folder;
}

class Removal {
  public:
    explicit Removal(int parent) : parent_(parent), mount_(mountOf(parent, "The folder above")) {}

    void remove(const std::string& name) {
        take(name);
        while (!levels_.empty()) {
            if (const char* const entry = levels_.back().entries.next())
                take(entry);
            else
                leave();
        }
    }

  private:
    int folder() const { return levels_.empty() ? parent_ : levels_.back().entries.descriptor(); }

    void take(const std::string& name) {
        if (::unlinkat(folder(), name.c_str(), 0) == 0) {
            if (!levels_.empty())
                levels_.back().isChanged = true;
        } else if (errno == EISDIR) {
            enter(name);
        } else if (errno != ENOENT) {
            throw failureAt(name, InstallCode::notRemoved);
        }
    }

    void enter(const std::string& name) {
        platform::FileDescriptor descriptor = openFolder(folder(), name);
        if (!descriptor)
            throw failureAt(name, InstallCode::notRemoved);
        if (mountOf(descriptor.get(), name) != mount_)
            throw InstallFailure(InstallCode::notRemoved, name + ": a mounted file system");
        ::fchmod(descriptor.get(), S_IRWXU); // its owner may have forbidden to write
        levels_.push_back(
            {DirectoryReader(std::move(descriptor), name, InstallCode::notRemoved), name});
    }

    /// At the end of a folder. Some file systems skip entries while others are removed.
    void leave() {
        Level& level = levels_.back();
        const int above =
            levels_.size() == 1 ? parent_ : levels_[levels_.size() - 2].entries.descriptor();
        if (::unlinkat(above, level.name.c_str(), AT_REMOVEDIR) == 0 || errno == ENOENT) {
            levels_.pop_back();
            if (!levels_.empty())
                levels_.back().isChanged = true;
        } else if (errno == ENOTEMPTY && std::exchange(level.isChanged, false)) {
            level.entries.rewind();
        } else {
            throw failureAt(level.name, InstallCode::notRemoved);
        }
    }

    const int parent_;
    const Mount mount_;
    std::vector<Level> levels_;
};

} // namespace

void removeTree(int parent, const std::string& name) {
    Removal(parent).remove(name);
}
