#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

/// Bytes of the UTF-8 character that `text`, which is not empty, begins with; 0 when it begins with
/// none: a stray or missing continuation byte, an overlong form, a surrogate, a code point beyond
/// Unicode. Any thread.
std::size_t utf8Length(std::string_view text) noexcept;

/// The character that `bytes`, those of one as utf8Length() tells them, stand for. Any thread.
char32_t utf8Character(std::string_view bytes) noexcept;

/// The beginning of a text that has at most so many bytes, cut between two characters and before
/// any NUL. Bytes that are no UTF-8 become question marks. Any thread.
std::string truncatedUtf8(std::string_view text, std::size_t longest);

} // namespace platform
