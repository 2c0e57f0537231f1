#include "platform/base/HarmlessText.h"

#include "platform/base/Utf8.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace platform {

namespace {

bool isControl(char32_t character) noexcept {
    return character < 0x20 || (character >= 0x7F && character <= 0x9F);
}

bool isSeparator(char32_t character) noexcept {
    return character == 0x2028 || character == 0x2029;
}

bool turnsDirection(char32_t character) noexcept {
    return (character >= 0x202A && character <= 0x202E) || // embeddings, overrides
           (character >= 0x2066 && character <= 0x2069);   // isolates
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

std::string escaped(const char* format, unsigned code) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), format, code);
    return text.data();
}

} // namespace

void makeHarmless(std::span<char> text, ControlsKept kept) noexcept {
    const auto isPlain = [kept](char character) {
        return (character >= 0x20 && character < 0x7F) ||
               (kept == ControlsKept::lineFeedAndTab && (character == '\n' || character == '\t'));
    };
    char* const end = text.data() + text.size();
    for (char* at = std::find_if_not(text.data(), end, isPlain); at != end;
         at = std::find_if_not(at, end, isPlain)) {
        std::string_view rest(at, end);
        const auto [bytes, character] = takeUtf8(rest);
        if (!character || isControl(*character))
            std::fill_n(at, bytes.size(), '?');
        at += bytes.size();
    }
}

std::string printableText(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const auto [bytes, character] = takeUtf8(text);
        if (!character)
            result += escaped("\\x%02x", static_cast<unsigned char>(bytes[0]));
        else if (character == U'\n')
            result += "\\n";
        else if (isControl(*character) || disturbsLine(*character))
            result += escaped("\\u%04x", *character);
        else
            result += bytes;
    }
    return result;
}

std::string shownLine(std::string_view text) {
    std::string line;
    while (!text.empty()) {
        const auto [bytes, character] = takeUtf8(text);
        if (!character)
            line += '?';
        else if (isControl(*character) || isSeparator(*character))
            line += ' ';
        else if (!turnsDirection(*character) && !isHidden(*character))
            line += bytes;
    }
    return line;
}

bool disturbsLine(char32_t character) noexcept {
    constexpr char32_t nextLine = 0x85;
    return character == U'\n' || character == nextLine || isSeparator(character) ||
           turnsDirection(character);
}

} // namespace platform
