#include "platform/files/SharedFolderCalls.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

SharedFolderCalls& SharedFolderCalls::system() noexcept {
    static SharedFolderCalls calls;
    return calls;
}

int SharedFolderCalls::create(int folder, const char* name) noexcept {
    return ::openat(folder, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                    S_IRUSR | S_IWUSR);
}

ssize_t SharedFolderCalls::write(int file, const void* bytes, std::size_t size) noexcept {
    return ::write(file, bytes, size);
}

int SharedFolderCalls::changeMode(int file, mode_t mode) noexcept {
    return ::fchmod(file, mode);
}

int SharedFolderCalls::close(int file) noexcept {
    return ::close(file);
}

int SharedFolderCalls::rename(int folder, const char* from, const char* to) noexcept {
    return ::renameat(folder, from, folder, to);
}

int SharedFolderCalls::remove(int folder, const char* name, int flags) noexcept {
    return ::unlinkat(folder, name, flags);
}

uid_t SharedFolderCalls::user() noexcept {
    return ::geteuid();
}

} // namespace platform
