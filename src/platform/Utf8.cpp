#include "platform/Utf8.h"

namespace platform {

namespace {

bool isContinuation(unsigned char byte) noexcept {
    return (byte & 0xC0U) == 0x80U;
}

} // namespace

std::size_t utf8Length(std::string_view text) noexcept {
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

char32_t utf8CodePoint(std::string_view character) noexcept {
    if (character.size() == 1)
        return static_cast<unsigned char>(character.front());
    // The lead byte holds as many bits less as the character has bytes.
    char32_t code = static_cast<unsigned char>(character.front()) & (0x7FU >> character.size());
    for (const char each : character.substr(1))
        code = code << 6U | (static_cast<unsigned char>(each) & 0x3FU);
    return code;
}

} // namespace platform
