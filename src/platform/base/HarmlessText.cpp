#include "platform/base/HarmlessText.h"

#include "platform/base/Utf8.h"

#include <algorithm>
#include <string_view>

namespace platform {

namespace {

bool isPlain(char character) noexcept {
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 0x20 && byte < 0x7F;
}

bool isPlainOrKept(char character) noexcept {
    return isPlain(character) || character == '\n' || character == '\t';
}

/// Whether the character is a control beyond ASCII, which some terminals obey.
bool isHighControl(std::string_view character) noexcept {
    return character.size() == 2 && character[0] == '\xC2' &&
           static_cast<unsigned char>(character[1]) < 0xA0;
}

template <typename Predicate>
void overwrite(char* at, char* end, Predicate isHarmless) noexcept {
    for (at = std::find_if_not(at, end, isHarmless); at != end;
         at = std::find_if_not(at, end, isHarmless)) {
        const std::string_view rest(at, static_cast<std::size_t>(end - at));
        const std::size_t length = utf8Length(rest);
        if (length < 2 || isHighControl(rest.substr(0, length)))
            at = std::fill_n(at, std::max<std::size_t>(length, 1), '?');
        else
            at += length;
    }
}

} // namespace

void makeHarmless(std::span<char> text, ControlsKept kept) noexcept {
    char* const end = text.data() + text.size();
    if (kept == ControlsKept::lineFeedAndTab)
        overwrite(text.data(), end, [](char c) { return isPlainOrKept(c); });
    else
        overwrite(text.data(), end, [](char c) { return isPlain(c); });
}

} // namespace platform
