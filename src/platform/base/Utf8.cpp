#include "platform/base/Utf8.h"

#include <algorithm>
#include <array>

namespace platform {

namespace {

bool isContinuation(unsigned char byte) noexcept {
    return (byte & 0xC0U) == 0x80U;
}

/// 0 where `text` begins with no character.
std::size_t lengthOfFirst(std::string_view text) noexcept {
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80)
        return 1;
    const std::size_t length = lead >= 0xC2 && lead <= 0xDF   ? 2
                               : lead >= 0xE0 && lead <= 0xEF ? 3
                               : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                              : 0;
    if (length == 0 || text.size() < length)
        return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if (!isContinuation(byte(i)))
            return 0;
    }
    // Overlong forms, surrogates, and what lies beyond Unicode.
    const unsigned char second = byte(1);
    const bool invalid = (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
                         (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F);
    return invalid ? 0 : length;
}

} // namespace

Utf8Character takeUtf8(std::string_view& text) noexcept {
    constexpr std::array<unsigned, 5> leadBits{0, 0x7F, 0x1F, 0x0F, 0x07};
    const std::size_t length = lengthOfFirst(text);
    Utf8Character taken{text.substr(0, std::max<std::size_t>(length, 1)), std::nullopt};
    text.remove_prefix(taken.bytes.size());
    if (length == 0)
        return taken;
    char32_t code = static_cast<unsigned char>(taken.bytes[0]) & leadBits[length];
    for (const char byte : taken.bytes.substr(1))
        code = code << 6U | (static_cast<unsigned char>(byte) & 0x3FU);
    taken.code = code;
    return taken;
}

std::string truncatedUtf8(std::string_view text, std::size_t longest) {
    std::string result;
    while (!text.empty() && text.front() != '\0') {
        const auto [bytes, character] = takeUtf8(text);
        if (result.size() + bytes.size() > longest)
            break;
        result += character ? bytes : "?";
    }
    return result;
}

} // namespace platform
