#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Texts that strangers chose, such as the names of programs, in lines that people read. Any
/// thread.

/// Whether a character would begin a new line, or turn the direction of the text behind it, so that
/// a line would show something else than it says.
bool disturbsLine(char32_t character) noexcept;

/// `text` with an escape in place of each such character, of each control character and of each
/// byte that is no UTF-8: "\n", "\u202e", "\xff".
std::string printableText(std::string_view text);

} // namespace platform
