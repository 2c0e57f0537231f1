#pragma once

#include <cstddef>
#include <sys/types.h>

namespace platform {

/// The system calls with which SharedFolder writes a file. Tests replace them with calls that fail.
/// Each is as in section 2 of the manual.
class SharedFolderCalls {
  public:
    virtual ~SharedFolderCalls() = default;

    static SharedFolderCalls& system() noexcept;

    virtual int create(int folder, const char* name) noexcept; ///< openat; a new file, mode 0600
    virtual ssize_t write(int file, const void* bytes, std::size_t size) noexcept;
    virtual int changeMode(int file, mode_t mode) noexcept; ///< fchmod
    virtual int close(int file) noexcept;
    virtual int rename(int folder, const char* from, const char* to) noexcept; ///< renameat
    virtual int remove(int folder, const char* name, int flags) noexcept;      ///< unlinkat
    virtual uid_t user() noexcept;                                             ///< geteuid
};

} // namespace platform
