#pragma once

#include "platform/base/FileDescriptor.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace QN::logviewer {

/// An open log file. It stays the same file, whatever happens to its path. Any thread.
class LogBytes {
  public:
    /// Null, with errno set, if the file cannot be opened or is no regular file.
    [[nodiscard]] static std::shared_ptr<const LogBytes> open(const std::string& path);

    /// Bytes from `offset` on. Fewer at the end of the file, and where it cannot be read.
    std::size_t read(std::uint64_t offset, std::span<char> bytes) const noexcept;
    [[nodiscard]] std::string text(std::uint64_t offset, std::size_t size) const;

    [[nodiscard]] std::uint64_t size() const noexcept;

    /// The first byte from `offset` on that may not be in a hole.
    [[nodiscard]] std::uint64_t dataAfter(std::uint64_t offset) const noexcept;

    /// Whether the path refers to this file.
    [[nodiscard]] bool isAt(const std::string& path) const noexcept;

    [[nodiscard]] bool isDeleted() const noexcept;

    [[nodiscard]] int descriptor() const noexcept { return file_.get(); }

  private:
    explicit LogBytes(platform::FileDescriptor file) noexcept : file_(std::move(file)) {}

    platform::FileDescriptor file_;
};

} // namespace QN::logviewer
