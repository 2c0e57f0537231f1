#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// What a text begins with.
struct Utf8Character {
    std::string_view bytes;       ///< one where there is no character
    std::optional<char32_t> code; ///< none of a stray or missing continuation byte, an overlong
                                  ///< form, a surrogate, a code point beyond Unicode
};

/// Takes the first character off `text`, which is not empty. Any thread.
Utf8Character takeUtf8(std::string_view& text) noexcept;

/// The text cut to at most `longest` bytes, between two characters and before any NUL. Bytes that
/// are not UTF-8 become question marks. Any thread.
std::string truncatedUtf8(std::string_view text, std::size_t longest);

} // namespace platform
