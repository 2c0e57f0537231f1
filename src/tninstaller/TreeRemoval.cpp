#include "tninstaller/TreeRemoval.h"

#include "tninstaller/DirectoryReader.h"
#include "tninstaller/InstallFailure.h"

#include <cstdint>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

/// Who may put something into a folder.
struct Writers {
    uid_t owner;
    mode_t others; // permissions of the group and of everybody
    gid_t group;   // if it may write

    bool operator==(const Writers&) const = default;
    bool isOnlyRoot() const noexcept { return owner == 0 && others == 0; }

    static Writers of(const struct stat& status) noexcept {
        return {status.st_uid, status.st_mode & (S_IWGRP | S_IWOTH),
                (status.st_mode & S_IWGRP) != 0 ? status.st_gid : 0};
    }
};

/// What root may remove for somebody else. Who may write a folder can move another one there from
/// elsewhere, as long as that one is writable too, and with it all that is in it.
struct Origin {
    Writers writers;
    bool
        isRootsDoing; // neither the folder nor what is above it can have been moved there by others

    /// That of a folder within; nothing if what is in it must stay.
    std::optional<Origin> within(const struct stat& folder) const noexcept {
        const Writers inner = Writers::of(folder);
        if (isRootsDoing && (writers.isOnlyRoot() || inner.isOnlyRoot()))
            return Origin{inner, true};
        const bool isSticky = inner.others != 0 && (folder.st_mode & S_ISVTX) != 0;
        if (inner == writers && !isSticky)
            return Origin{inner, false}; // whoever has moved it there could empty it, too
        return std::nullopt;
    }
};

struct Level {
    DirectoryReader entries;
    std::string name;
    Origin origin;
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
        const Origin origin = originOf(descriptor.get(), name);
        ::fchmod(descriptor.get(), S_IRWXU); // its owner may have forbidden to write
        levels_.push_back(
            {DirectoryReader(std::move(descriptor), name, InstallCode::notRemoved), name, origin});
    }

    Origin originOf(int descriptor, const std::string& name) const {
        constexpr Origin roots{{0, 0, 0}, true};
        struct stat status {};
        if (::fstat(descriptor, &status) != 0)
            throw failureAt(name, InstallCode::notRemoved);
        if (::geteuid() != 0)
            return roots; // its own rights are the limit
        const auto origin = (levels_.empty() ? roots : levels_.back().origin).within(status);
        if (!origin)
            throw InstallFailure(InstallCode::notRemoved,
                                 name + ": it may have been moved there from elsewhere");
        return *origin;
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
