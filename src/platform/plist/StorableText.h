#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Whether the XML of a property list can represent the character: not control characters except
/// tab, line feed and carriage return, nor surrogates, U+FFFE and U+FFFF. Any thread.
[[nodiscard]] bool isStorableCharacter(char32_t character) noexcept;

/// The text as a property list stores it: UTF-8 with U+FFFD in place of each character that it
/// cannot represent, and of each byte of `text` that is not UTF-8. Any thread.
std::string storableText(std::string_view text);

} // namespace platform
