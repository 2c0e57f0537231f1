#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Texts that strangers chose, such as the names of programs, in lines that people read. Any
/// thread.

/// Whether a character would turn the direction of the text behind it: an embedding, an override or
/// an isolate, or the end of one. The marks that belong to right-to-left writing do not.
bool turnsDirection(char32_t character) noexcept;

/// Whether a character would begin a new line, or turnsDirection(), so that a line would show
/// something else than it says.
bool disturbsLine(char32_t character) noexcept;

/// `text` with an escape in place of each such character, of each control character and of each
/// byte that is no UTF-8: "\n", "\u202e", "\xff".
std::string printableText(std::string_view text);

} // namespace platform
