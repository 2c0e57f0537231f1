#include "platform/plist/StorableText.h"

#include "platform/base/Utf8.h"

namespace platform {

bool isStorableCharacter(char32_t character) noexcept {
    if (character < 0x20)
        return character == U'\t' || character == U'\n' || character == U'\r';
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    return !isSurrogate && character != 0xFFFE && character != 0xFFFF;
}

std::string storableText(std::string_view text) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    std::string storable;
    while (!text.empty()) {
        const auto [bytes, character] = takeUtf8(text);
        storable += character && isStorableCharacter(*character) ? bytes : replacement;
    }
    return storable;
}

} // namespace platform
