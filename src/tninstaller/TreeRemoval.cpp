#include "tninstaller/TreeRemoval.h"

#include "tninstaller/DirectoryReader.h"
#include "tninstaller/InstallFailure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

struct Level {
    DirectoryReader entries;
    std::string name;
    bool isChanged = false; // since the entries were read from the beginning
};

class Removal {
  public:
    explicit Removal(int parent) : parent_(parent) {
        struct stat status {};
        if (::fstat(parent, &status) != 0)
            throw failureAt("The folder above", InstallCode::notRemoved);
        device_ = status.st_dev;
    }

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
        platform::FileDescriptor descriptor(
            ::openat(folder(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        struct stat status {};
        if (!descriptor || ::fstat(descriptor.get(), &status) != 0)
            throw failureAt(name, InstallCode::notRemoved);
        if (status.st_dev != device_)
            throw InstallFailure(InstallCode::notRemoved, name + ": a mounted file system");
        ::fchmod(descriptor.get(), S_IRWXU); // its owner may have forbidden it
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
    dev_t device_ = 0;
    std::vector<Level> levels_;
};

} // namespace

void removeTree(int parent, const std::string& name) {
    Removal(parent).remove(name);
}
