#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace platform {

/// Writes lines of "key value" to a descriptor that is not owned. All of it may be called in a
/// signal handler. What cannot be written, to a full disk, is dropped.
class CrashWriter {
  public:
    explicit CrashWriter(int descriptor) noexcept : descriptor_(descriptor) {}

    CrashWriter& text(std::string_view text) noexcept;
    /// The same, with blanks in place of control characters: for what must not begin a line.
    CrashWriter& oneLine(std::string_view text) noexcept;
    CrashWriter& decimal(std::int64_t number) noexcept;
    CrashWriter& hex(std::uint64_t number) noexcept; ///< with 0x
    CrashWriter& endLine() noexcept { return text("\n"); }

    /// Hands over what is kept. False if something could not be written so far.
    bool flush() noexcept;

  private:
    void put(char character) noexcept;

    const int descriptor_;
    std::array<char, 1024>
        kept_; // NOLINT(cppcoreguidelines-pro-type-member-init): used up to size_
    std::size_t size_ = 0;
    bool isWhole_ = true;
};

} // namespace platform
