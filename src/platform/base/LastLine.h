#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace platform {

/// The line that this process has logged last, for the report of a crash. Neither function waits or
/// allocates. A line that comes while another is being kept is dropped.

/// Keeps the beginning of the line. Any thread.
void keepLastLine(std::string_view text) noexcept;

/// Copies it, cut to the buffer, and returns its length. May be called in a signal handler; a line
/// that is being kept at that moment comes out torn.
std::size_t copyLastLine(std::span<char> buffer) noexcept;

} // namespace platform
