#pragma once

#include <cstddef>
#include <sys/types.h>

namespace platform {

/// The system calls that read and write the defaults' file. Tests replace them with calls that
/// fail. Each is as in section 2 of the manual.
class DefaultsFileCalls {
  public:
    virtual ~DefaultsFileCalls() = default;

    static DefaultsFileCalls& system() noexcept;

    virtual int open(const char* path, int flags, mode_t mode) noexcept;
    virtual ssize_t read(int file, void* buffer, std::size_t size) noexcept;
    virtual ssize_t write(int file, const void* bytes, std::size_t size) noexcept;
    virtual int sync(int file) noexcept; ///< fsync
    virtual int rename(const char* from, const char* to) noexcept;
};

} // namespace platform
