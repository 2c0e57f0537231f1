#include "platform/defaults/DefaultsFileCalls.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace platform {

DefaultsFileCalls& DefaultsFileCalls::system() noexcept {
    static DefaultsFileCalls calls;
    return calls;
}

int DefaultsFileCalls::open(const char* path, int flags, mode_t mode) noexcept {
    return ::open(path, flags, mode);
}

ssize_t DefaultsFileCalls::read(int file, void* buffer, std::size_t size) noexcept {
    return ::read(file, buffer, size);
}

ssize_t DefaultsFileCalls::write(int file, const void* bytes, std::size_t size) noexcept {
    return ::write(file, bytes, size);
}

int DefaultsFileCalls::sync(int file) noexcept {
    return ::fsync(file);
}

int DefaultsFileCalls::rename(const char* from, const char* to) noexcept {
    return ::rename(from, to);
}

} // namespace platform
