#include "platform/base/PrintableText.h"

#include "platform/base/Utf8.h"

#include <array>
#include <cstddef>
#include <cstdio>

namespace platform {

namespace {

bool isControl(char32_t character) noexcept {
    return character < 0x20 || (character >= 0x7F && character <= 0x9F);
}

std::string escaped(const char* format, char32_t code) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), format, static_cast<unsigned>(code));
    return text.data();
}

} // namespace

bool turnsDirection(char32_t character) noexcept {
    return (character >= 0x202A && character <= 0x202E) || // embeddings, overrides
           (character >= 0x2066 && character <= 0x2069);   // isolates
}

bool disturbsLine(char32_t character) noexcept {
    const bool beginsLine =
        character == U'\n' || character == 0x85 || character == 0x2028 || character == 0x2029;
    return beginsLine || turnsDirection(character);
}

std::string printableText(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t length = utf8Length(text);
        const std::string_view bytes = text.substr(0, length != 0 ? length : 1);
        text.remove_prefix(bytes.size());
        if (length == 0) {
            result += escaped("\\x%02x", static_cast<unsigned char>(bytes[0]));
            continue;
        }
        const char32_t character = utf8Character(bytes);
        if (character == U'\n')
            result += "\\n";
        else if (isControl(character) || disturbsLine(character))
            result += escaped("\\u%04x", character);
        else
            result += bytes;
    }
    return result;
}

} // namespace platform
