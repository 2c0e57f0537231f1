#pragma once

#include <cstddef>
#include <string_view>

namespace platform {

/// Bytes of the UTF-8 character that `text`, which is not empty, begins with; 0 when it begins with
/// none: a stray or missing continuation byte, an overlong form, a surrogate, a code point beyond
/// Unicode. Any thread.
std::size_t utf8Length(std::string_view text) noexcept;

/// The code point of one whole character, or of one byte that is none.
char32_t utf8CodePoint(std::string_view character) noexcept;

} // namespace platform
