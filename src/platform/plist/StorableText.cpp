#include "platform/plist/StorableText.h"

#include "platform/base/Utf8.h"

#include <algorithm>

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
        const std::size_t length = utf8Length(text);
        const std::string_view bytes = text.substr(0, std::max<std::size_t>(length, 1));
        storable += length > 0 && isStorableCharacter(utf8Character(bytes)) ? bytes : replacement;
        text.remove_prefix(bytes.size());
    }
    return storable;
}

} // namespace platform
