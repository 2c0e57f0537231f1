#include "framework/redaction/AddressPatterns.h"

#include "framework/redaction/Characters.h"

#include <algorithm>
#include <charconv>

using namespace characters;

namespace {

bool isByte(std::string_view text, std::size_t place) noexcept {
    return isHex(at(text, place)) && isHex(at(text, place + 1));
}

/// The separator behind the first byte.
std::string_view separatorAt(std::string_view text, std::size_t place) noexcept {
    const char first = at(text, place);
    if (first == ':' || first == '-' || first == '_')
        return text.substr(place, 1);
    const std::string_view escaped = text.substr(std::min(place, text.size()), 3);
    return escaped == "%3A" || escaped == "%3a" ? escaped : std::string_view();
}

std::size_t interfaceNameAt(std::string_view text, std::size_t place) noexcept {
    constexpr std::size_t prefix = 3;
    constexpr std::size_t digits = 12;
    if (text.substr(place, prefix) != "enx" && text.substr(place, prefix) != "wlx")
        return 0;
    for (std::size_t i = 0; i < digits; ++i) {
        if (!isHex(at(text, place + prefix + i)))
            return 0;
    }
    return isWord(at(text, place + prefix + digits)) ? 0 : prefix + digits;
}

std::size_t ip4AddressAt(std::string_view text, std::size_t place) noexcept {
    unsigned parts[4] = {};
    std::size_t end = place;
    for (int i = 0; i < 4; ++i) {
        const std::size_t first = i == 0 ? end : end + 1;
        if (i > 0 && at(text, end) != '.')
            return 0;
        const char* const begin = text.data() + std::min(first, text.size());
        const auto [stop, error] = std::from_chars(begin, text.data() + text.size(), parts[i]);
        if (error != std::errc{} || parts[i] > 255 || stop - begin > 3)
            return 0;
        end = static_cast<std::size_t>(stop - text.data());
    }
    const bool goesOn =
        isWord(at(text, end)) || (at(text, end) == '.' && isDigit(at(text, end + 1)));
    const bool isInside = place > 0 && (text[place - 1] == '.' || text[place - 1] == '-');
    const bool saysNothing = parts[0] == 127 || parts[0] == 0 || parts[0] == 255;
    return goesOn || isInside || saysNothing ? 0 : end - place;
}

/// "fe80::1", "2001:db8:0:0:0:0:0:1". Times, names of classes and places of devices have colons
/// too: either all eight groups are there, or a first one of three or four digits is followed by
/// others of which some are left out.
std::size_t ip6AddressAt(std::string_view text, std::size_t place) noexcept {
    int groups = 0;
    int gaps = 0;
    bool hasDigit = false;
    std::size_t firstLength = 0;
    std::size_t end = place;
    while (end < text.size()) {
        std::size_t length = 0;
        for (; isHex(at(text, end + length)); ++length)
            hasDigit = hasDigit || isDigit(text[end + length]);
        if (length > 4)
            return 0;
        groups += length > 0 ? 1 : 0;
        if (end == place)
            firstLength = length;
        end += length;
        if (at(text, end) != ':' || (length == 0 && gaps == 0))
            break;
        if (at(text, end + 1) == ':') {
            if (++gaps > 1)
                return 0;
            end += 2;
        } else if (isHex(at(text, end + 1))) {
            end += 1;
        } else {
            break;
        }
    }
    if (isWord(at(text, end)) || !hasDigit)
        return 0;
    const bool isWhole = groups == 8 && gaps == 0;
    const bool isShort = gaps == 1 && groups < 8 && firstLength >= 3;
    return isWhole || isShort ? end - place : 0;
}

} // namespace

std::size_t macAddressAt(std::string_view text, std::size_t place) noexcept {
    constexpr int bytesOfAddress = 6;
    if (!isByte(text, place))
        return interfaceNameAt(text, place);
    const std::string_view separator = separatorAt(text, place + 2);
    if (separator.empty())
        return 0;
    int bytes = 1;
    bool saysSomething = text.substr(place, 2) != "00";
    std::size_t end = place + 2;
    while (text.substr(end, separator.size()) == separator &&
           isByte(text, end + separator.size())) {
        saysSomething = saysSomething || text.substr(end + separator.size(), 2) != "00";
        end += separator.size() + 2;
        ++bytes;
    }
    const bool goesOn = isAlphanumeric(at(text, end));
    return bytes >= bytesOfAddress && saysSomething && !goesOn ? end - place : 0;
}

std::size_t ipAddressAt(std::string_view text, std::size_t place) noexcept {
    const std::size_t length = isDigit(at(text, place)) ? ip4AddressAt(text, place) : 0;
    return length > 0 ? length : ip6AddressAt(text, place);
}
