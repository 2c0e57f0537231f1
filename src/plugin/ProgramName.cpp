#include "plugin/ProgramName.h"

#include "comm/MVCommMessages.h"
#include "platform/Utf8.h"

#include <algorithm>
#include <string_view>

namespace {

/// Whether the character is a blank, a control character, or shows nothing.
bool isUnseen(char32_t code) noexcept {
    struct Range {
        char32_t first;
        char32_t last;
    };
    constexpr Range ranges[] = {
        {0x00, 0x20},     {0x7F, 0xA0},     {0xAD, 0xAD},     {0x34F, 0x34F},   {0x61C, 0x61C},
        {0x115F, 0x1160}, {0x1680, 0x1680}, {0x17B4, 0x17B5}, {0x180B, 0x180F}, {0x2000, 0x200F},
        {0x2028, 0x202F}, {0x205F, 0x206F}, {0x2800, 0x2800}, {0x3000, 0x3000}, {0x3164, 0x3164},
        {0xFE00, 0xFE0F}, {0xFEFF, 0xFEFF}, {0xFFA0, 0xFFA0}, {0xFFF9, 0xFFFB}, {0xE0000, 0xE0FFF}};
    return std::ranges::any_of(
        ranges, [code](const Range& range) { return code >= range.first && code <= range.last; });
}

/// The name from its first to its last character that is seen.
std::string_view trimmed(std::string_view name) {
    std::size_t begin = name.size();
    std::size_t end = 0;
    for (std::size_t at = 0; at < name.size();) {
        const std::string_view rest = name.substr(at);
        const std::size_t length = std::max<std::size_t>(platform::utf8Length(rest), 1);
        if (!isUnseen(platform::utf8Character(rest.substr(0, length)))) {
            begin = std::min(begin, at);
            end = at + length;
        }
        at += length;
    }
    return begin < end ? name.substr(begin, end - begin) : std::string_view();
}

} // namespace

std::string checkinName(std::string name) {
    if (trimmed(name) != kMVCommNotificationSoundsName)
        return name;
    name = kMVCommNotificationSoundsName;
    return name.append(" (program)");
}
