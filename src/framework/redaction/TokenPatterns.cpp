#include "framework/redaction/TokenPatterns.h"

#include "framework/redaction/Characters.h"

#include <algorithm>
#include <array>

using namespace characters;

namespace {

bool isTokenByte(char byte) noexcept {
    return isAlphanumeric(byte) || byte == '_' || byte == '-' || byte == '+';
}

std::string_view runAt(std::string_view text, std::size_t place) noexcept {
    std::size_t end = place;
    while (end < text.size() && isTokenByte(text[end]))
        ++end;
    while (end < text.size() && text[end] == '=')
        ++end;
    return text.substr(place, end - place);
}

bool hasKnownPrefix(std::string_view run) noexcept {
    constexpr std::size_t shortest = 16;
    constexpr std::array prefixes{"ghp_", "gho_", "ghs_", "github_pat_", "glpat-",
                                  "xox",  "sk-",  "AKIA", "eyJ"};
    return run.size() >= shortest &&
           std::any_of(prefixes.begin(), prefixes.end(),
                       [&](const char* prefix) { return run.starts_with(prefix); });
}

bool isUuid(std::string_view run) noexcept {
    constexpr std::string_view form = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    return run.size() == form.size() &&
           std::equal(run.begin(), run.end(), form.begin(), [](char byte, char expected) {
               return expected == 'x' ? isHex(byte) : byte == expected;
           });
}

enum class Class { lower, upper, digit, other };

Class classOf(char byte) noexcept {
    if (isDigit(byte))
        return Class::digit;
    if (!isLetter(byte))
        return Class::other;
    return lower(byte) == byte ? Class::lower : Class::upper;
}

/// In words that people make, letters follow letters and digits follow digits.
bool isRandom(std::string_view run) noexcept {
    constexpr std::size_t shortest = 24;
    constexpr std::size_t fewestDigits = 4;
    if (run.size() < shortest || run.starts_with("_Z"))
        return false;
    std::size_t digits = isDigit(run.front()) ? 1 : 0;
    std::size_t changes = 0;
    std::size_t breaks = 0;
    for (std::size_t i = 1; i < run.size(); ++i) {
        const Class one = classOf(run[i]);
        const Class before = classOf(run[i - 1]);
        digits += one == Class::digit ? 1U : 0U;
        breaks += one == Class::other ? 1U : 0U;
        changes += one != before && one != Class::other && before != Class::other ? 1U : 0U;
    }
    return digits >= fewestDigits && breaks * 8 <= run.size() && changes * 3 >= run.size();
}

bool isLongHex(std::string_view run) noexcept {
    constexpr std::size_t shortest = 32;
    return run.size() >= shortest && std::all_of(run.begin(), run.end(), isHex) &&
           std::any_of(run.begin(), run.end(), isDigit) &&
           std::any_of(run.begin(), run.end(), isLetter);
}

/// "build id 4f…", "BuildID[sha1]=4f…", "<buildID>4f…"; the numbers of hardware, "pci:v0000…".
bool isIdOfThings(std::string_view text, std::size_t place) noexcept {
    constexpr std::size_t reach = 24;
    const std::size_t from = place - std::min(place, reach);
    const std::string_view before = text.substr(from, place - from);
    const std::string_view line = before.substr(before.rfind('\n') + 1);
    return line.ends_with("pci:") || line.ends_with("usb:") ||
           lowered(line).find("build") != std::string::npos;
}

} // namespace

std::size_t tokenAt(std::string_view text, std::size_t place) noexcept {
    const std::string_view run = runAt(text, place);
    constexpr std::size_t shortest = 16;
    if (run.size() < shortest)
        return 0;
    if (!hasKnownPrefix(run) && !isUuid(run) && !isRandom(run) && !isLongHex(run))
        return 0;
    return isIdOfThings(text, place) ? 0 : run.size();
}
