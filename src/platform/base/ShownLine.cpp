#include "platform/base/ShownLine.h"

#include "platform/base/PrintableText.h"
#include "platform/base/Utf8.h"

#include <algorithm>
#include <cstddef>

namespace platform {

namespace {

bool isBreak(char32_t character) noexcept {
    return character < 0x20 || (character >= 0x7F && character <= 0x9F) || character == 0x2028 ||
           character == 0x2029;
}

bool isHidden(char32_t character) noexcept {
    struct Range {
        char32_t first;
        char32_t last;
    };
    constexpr Range ranges[] = {
        {0xAD, 0xAD},       // soft hyphen
        {0x180E, 0x180E},   // Mongolian vowel separator
        {0x200B, 0x200B},   // zero-width space
        {0x2060, 0x2064},   // word joiner, invisible operators
        {0x206A, 0x206F},   // deprecated controls of shaping and digits
        {0xFEFF, 0xFEFF},   // byte-order mark
        {0xFFF9, 0xFFFB},   // annotations
        {0x1D173, 0x1D17A}, // controls of musical notation
        {0xE0000, 0xE007F}, // tags
    };
    return std::ranges::any_of(ranges, [character](const Range& range) {
        return character >= range.first && character <= range.last;
    });
}

} // namespace

std::string shownLine(std::string_view text) {
    std::string line;
    while (!text.empty()) {
        const std::size_t length = utf8Length(text);
        const std::string_view bytes = text.substr(0, std::max<std::size_t>(length, 1));
        text.remove_prefix(bytes.size());
        if (length == 0) {
            line += '?';
            continue;
        }
        const char32_t character = utf8Character(bytes);
        if (isBreak(character))
            line += ' ';
        else if (!turnsDirection(character) && !isHidden(character))
            line += bytes;
    }
    return line;
}

} // namespace platform
