#include "plugin/identity/ProgramName.h"

#include "comm/MVCommMessages.h"
#include "platform/base/Utf8.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

bool isIn(std::span<const Range> ranges, char32_t code) noexcept {
    return std::ranges::any_of(
        ranges, [code](const Range& range) { return code >= range.first && code <= range.last; });
}

/// Whether the character takes room and shows nothing.
bool isBlank(char32_t code) noexcept {
    constexpr Range ranges[] = {
        {0x09, 0x0D},     {0x20, 0x20},     {0xA0, 0xA0},     {0x1680, 0x1680}, {0x2000, 0x200A},
        {0x2028, 0x2029}, {0x202F, 0x202F}, {0x205F, 0x205F}, {0x2800, 0x2800}, {0x3000, 0x3000}};
    return isIn(ranges, code);
}

/// Whether the character is not shown at all, at least in some places.
bool isInvisible(char32_t code) noexcept {
    constexpr Range ranges[] = {
        {0x00, 0x08},     {0x0E, 0x1F},       {0x7F, 0x9F},       {0xAD, 0xAD},
        {0x34F, 0x34F},   {0x61C, 0x61C},     {0x115F, 0x1160},   {0x17B4, 0x17B5},
        {0x180B, 0x180F}, {0x200B, 0x200F},   {0x202A, 0x202E},   {0x2060, 0x206F},
        {0x3164, 0x3164}, {0xFE00, 0xFE0F},   {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0},
        {0xFFF0, 0xFFFB}, {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A}, {0xE0000, 0xE0FFF}};
    return isIn(ranges, code);
}

/// What is seen of the name: without blanks at its ends and without what is not shown.
std::string seen(std::string_view name) {
    std::string all;
    std::size_t end = 0;
    while (!name.empty()) {
        const auto [bytes, character] = platform::takeUtf8(name);
        const char32_t code = character.value_or(0);
        if (isInvisible(code) || (all.empty() && isBlank(code)))
            continue;
        all += bytes;
        if (!isBlank(code))
            end = all.size();
    }
    all.resize(end);
    return all;
}

} // namespace

std::string checkinName(std::string name) {
    if (seen(name) != kMVCommNotificationSoundsName)
        return name;
    name = kMVCommNotificationSoundsName;
    return name.append(" (program)");
}
