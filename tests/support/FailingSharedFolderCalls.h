#pragma once

#include "platform/files/SharedFolderCalls.h"

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <string>

namespace support {

/// Calls to the system that fail with an error number, as long as it is not 0.
class FailingSharedFolderCalls : public platform::SharedFolderCalls {
  public:
    std::atomic<int> createError = 0;
    std::filesystem::path failingFolder; // where alone nothing can be created; empty: everywhere
    std::atomic<int> writeError = 0;     // after half of it, as a disk that is nearly full
    std::atomic<int> modeError = 0;
    std::atomic<int> closeError = 0;
    std::atomic<int> renameError = 0;
    std::atomic<uid_t> userOffset = 0; // to the user who runs the test
    std::atomic<unsigned> renames = 0;

    int create(int folder, const char* name) noexcept override {
        return isFailing(folder) && fails(createError) ? -1
                                                       : SharedFolderCalls::create(folder, name);
    }
    ssize_t write(int file, const void* bytes, std::size_t size) noexcept override {
        SharedFolderCalls::write(file, bytes, writeError != 0 ? size / 2 : 0);
        return fails(writeError) ? -1 : SharedFolderCalls::write(file, bytes, size);
    }
    int changeMode(int file, mode_t mode) noexcept override {
        return fails(modeError) ? -1 : SharedFolderCalls::changeMode(file, mode);
    }
    int close(int file) noexcept override {
        const int result = SharedFolderCalls::close(file);
        return fails(closeError) ? -1 : result;
    }
    int rename(int folder, const char* from, const char* to) noexcept override {
        ++renames;
        return fails(renameError) ? -1 : SharedFolderCalls::rename(folder, from, to);
    }
    uid_t user() noexcept override { return SharedFolderCalls::user() + userOffset; }

  private:
    bool isFailing(int folder) const {
        return failingFolder.empty() ||
               std::filesystem::equivalent("/proc/self/fd/" + std::to_string(folder),
                                           failingFolder);
    }
    static bool fails(const std::atomic<int>& error) noexcept {
        if (error == 0)
            return false;
        errno = error;
        return true;
    }
};

} // namespace support
