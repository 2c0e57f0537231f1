#pragma once

#include "platform/base/FileDescriptor.h"

#include <string>
#include <string_view>
#include <sys/types.h>

namespace QN::log {

/// The file of a log, open for writing. One thread at a time.
class LogFile {
  public:
    /// write(2), or a test's replacement.
    using WriteCall = ssize_t (*)(int descriptor, const void* bytes, std::size_t size);

    /// Writes from the descriptor's current position on.
    LogFile(platform::FileDescriptor file, WriteCall writeCall) noexcept;

    /// Opens the file for writing at its end, or creates it. The result is empty, with errno set,
    /// on failure.
    [[nodiscard]] static platform::FileDescriptor open(const std::string& path);

    /// Whether the file ends in the middle of a line, as when its writer was killed.
    /// False when it cannot be read.
    [[nodiscard]] static bool endsWithinLine(const std::string& path) noexcept;

    /// Writes all of the bytes, in one call if possible, or none: a partial write on a full disk is
    /// truncated again. False if the bytes are lost.
    [[nodiscard]] bool write(std::string_view bytes) noexcept;

    /// Later writes are lost.
    void close() noexcept { file_.reset(); }

  private:
    void cutOff(std::size_t written) noexcept;

    platform::FileDescriptor file_;
    WriteCall write_;
};

} // namespace QN::log
