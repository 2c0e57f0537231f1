#include "platform/files/RegularFile.h"

#include <cerrno>
#include <sys/stat.h>

namespace platform {

FileDescriptor openRegularFile(const char* path, LastLink link, int folder) noexcept {
    const int links = link == LastLink::follow ? 0 : O_NOFOLLOW;
    FileDescriptor file(
        ::openat(folder, path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | links));
    struct stat status {};
    if (file && (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))) {
        file.reset();
        errno = EINVAL;
    }
    return file;
}

} // namespace platform
