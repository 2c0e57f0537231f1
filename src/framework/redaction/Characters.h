#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

/// Kinds of bytes, whatever the locale. Bytes beyond ASCII count as letters.
namespace characters {

[[nodiscard]] constexpr bool isDigit(char byte) noexcept {
    return byte >= '0' && byte <= '9';
}
[[nodiscard]] constexpr char lower(char byte) noexcept {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
}
[[nodiscard]] constexpr bool isLetter(char byte) noexcept {
    return lower(byte) >= 'a' && lower(byte) <= 'z';
}
[[nodiscard]] constexpr bool isAlphanumeric(char byte) noexcept {
    return isDigit(byte) || isLetter(byte);
}
[[nodiscard]] constexpr bool isHex(char byte) noexcept {
    return isDigit(byte) || (lower(byte) >= 'a' && lower(byte) <= 'f');
}

/// What a word is made of.
[[nodiscard]] inline bool isWord(char byte) noexcept {
    static constexpr auto table = [] {
        std::array<bool, 256> words{};
        for (std::size_t i = 0; i < words.size(); ++i) {
            const char one = static_cast<char>(i);
            words[i] = isAlphanumeric(one) || one == '_' || i >= 0x80;
        }
        return words;
    }();
    return table[static_cast<unsigned char>(byte)];
}

/// The byte there, or NUL outside the text.
[[nodiscard]] constexpr char at(std::string_view text, std::size_t place) noexcept {
    return place < text.size() ? text[place] : '\0';
}

[[nodiscard]] inline std::string lowered(std::string_view text) {
    std::string result(text);
    for (char& byte : result)
        byte = lower(byte);
    return result;
}

} // namespace characters
