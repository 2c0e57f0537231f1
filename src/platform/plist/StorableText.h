#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Whether the XML of a property list can hold the character: a control character but tab, line
/// feed and carriage return, a surrogate, U+FFFE and U+FFFF it cannot. Any thread.
bool isStorableCharacter(char32_t character) noexcept;

/// What a property list makes of a text: UTF-8 with U+FFFD in place of each character that it
/// cannot hold, and of each byte of `text` that is no UTF-8. Any thread.
std::string storableText(std::string_view text);

} // namespace platform
