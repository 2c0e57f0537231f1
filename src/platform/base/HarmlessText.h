#pragma once

#include <cstdint>
#include <span>

namespace platform {

enum class ControlsKept : std::uint8_t { none, lineFeedAndTab };

/// Overwrites with question marks what is no text and what a terminal or a reader of lines might
/// obey: control characters, those beyond ASCII (U+0080 to U+009F) too, and bytes that are no
/// UTF-8. The length stays. Any thread; neither allocates nor throws.
void makeHarmless(std::span<char> text, ControlsKept kept) noexcept;

} // namespace platform
