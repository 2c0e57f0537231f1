#include "platform/files/CopyFolderCalls.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

CopyFolderCalls& CopyFolderCalls::system() noexcept {
    static CopyFolderCalls calls;
    return calls;
}

int CopyFolderCalls::create(int folder, const char* name) noexcept {
    return ::openat(folder, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                    S_IRUSR | S_IWUSR);
}

ssize_t CopyFolderCalls::write(int file, const void* bytes, std::size_t size) noexcept {
    return ::write(file, bytes, size);
}

int CopyFolderCalls::changeMode(int file, mode_t mode) noexcept {
    return ::fchmod(file, mode);
}

int CopyFolderCalls::close(int file) noexcept {
    return ::close(file);
}

int CopyFolderCalls::rename(int folder, const char* from, const char* to) noexcept {
    return ::renameat(folder, from, folder, to);
}

int CopyFolderCalls::remove(int folder, const char* name, int flags) noexcept {
    return ::unlinkat(folder, name, flags);
}

uid_t CopyFolderCalls::user() noexcept {
    return ::geteuid();
}

} // namespace platform
