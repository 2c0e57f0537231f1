#include "platform/files/SessionLock.h"

#include "platform/base/Directories.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

namespace platform {

namespace {

FileDescriptor openFile(const std::string& name) {
    const std::string folder = runtimeDirectory();
    if (folder.empty())
        return {};
    const std::string path = folder + "/" + name + ".lock";
    return FileDescriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
}

} // namespace

SessionLock::SessionLock(const std::string& name) : file_(openFile(name)) {}

bool SessionLock::take() noexcept {
    return !file_ || ::flock(file_.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

} // namespace platform
