#pragma once

#include "platform/base/FileDescriptor.h"

#include <string>
#include <string_view>
#include <sys/types.h>

namespace QN::log {

/// The file of a log, open for writing. One thread at a time.
class LogFile {
  public:
    /// write(2), or what a test puts in its place.
    using WriteCall = ssize_t (*)(int descriptor, const void* bytes, std::size_t size);

    /// Writes on at the position of the descriptor.
    LogFile(platform::FileDescriptor file, WriteCall writeCall) noexcept;

    /// Opens the file for writing at its end, or makes it. It stays empty, with errno set, when
    /// that fails.
    static platform::FileDescriptor open(const std::string& path);

    /// Whether the file ends in the middle of a line, as when its writer was killed.
    /// False when it cannot be read.
    static bool endsWithinLine(const std::string& path) noexcept;

    /// Writes all of the bytes, in one call if the system takes them, or none: what a full disk has
    /// left half written is cut off again. False when they are lost.
    bool write(std::string_view bytes) noexcept;

    /// What is written from now on is lost.
    void close() noexcept { file_.reset(); }

  private:
    void cutOff(std::size_t written) noexcept;

    platform::FileDescriptor file_;
    WriteCall write_;
};

} // namespace QN::log
