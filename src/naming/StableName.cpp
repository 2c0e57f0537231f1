#include "naming/StableName.h"

#include "naming/ProgramKinds.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace {

bool isDigit(char each) noexcept {
    return std::isdigit(static_cast<unsigned char>(each)) != 0;
}

bool isHexDigit(char each) noexcept {
    return std::isxdigit(static_cast<unsigned char>(each)) != 0;
}

/// The number behind the letter in front of it, as in "v12" or "r12".
std::string_view withoutLetter(std::string_view text) {
    constexpr std::string_view letters = "brv";
    if (text.size() > 1 && letters.find(text.front()) != std::string_view::npos && isDigit(text[1]))
        text.remove_prefix(1);
    return text;
}

/// A part of a name that is a version or machine type.
bool isVersionPart(std::string_view part) {
    constexpr std::string_view parts[] = {"x86_64", "x86",   "amd64",  "arm64", "aarch64", "i386",
                                          "linux",  "Linux", "stable", "x64",   "64bit"};
    const std::string_view number = withoutLetter(part);
    return (!number.empty() && isDigit(number.front())) ||
           std::ranges::find(parts, part) != std::end(parts);
}

/// Whether the whole name is a version, which a name such as "0ad" or "7zip" is not.
bool isVersion(std::string_view name) {
    const std::string_view number = withoutLetter(name);
    return isVersionPart(name) &&
           (!isDigit(number.front()) || number.find('.') != std::string_view::npos ||
            std::ranges::all_of(number, isDigit));
}

/// Of a commit, a build or what a package is stored by: hexadecimal, or long and full of digits.
bool isHash(std::string_view text) {
    constexpr std::size_t shortest = 7;
    constexpr std::size_t longestWord = 20;
    constexpr int fewestDigits = 3;
    const auto digits = std::ranges::count_if(text, isDigit);
    const auto isPart = [](char each) { return isHexDigit(each) || each == '-'; };
    const auto isLetterOrDigit = [](char each) {
        return std::isalnum(static_cast<unsigned char>(each)) != 0;
    };
    return (text.size() >= shortest && digits > 0 && std::ranges::all_of(text, isPart)) ||
           (text.size() >= longestWord && digits >= fewestDigits &&
            std::ranges::all_of(text, isLetterOrDigit));
}

/// Without a version that is a part of the last word: "player2.1".
std::string_view withoutNumber(std::string_view name) {
    const std::size_t end = name.find_last_not_of("0123456789.");
    const bool hasVersion =
        end != std::string_view::npos && name.find('.', end + 1) != std::string_view::npos;
    return hasVersion ? name.substr(0, end + 1) : name;
}

} // namespace

std::string_view withoutVersion(std::string_view name, std::string_view separators) {
    std::size_t at = name.find_last_of(separators);
    while (at != std::string_view::npos && at > 0) {
        if (isVersionPart(name.substr(at + 1)) || isHash(name.substr(at + 1)))
            name = name.substr(0, at);
        at = name.find_last_of(separators, at - 1);
    }
    return name;
}

std::string_view stableFolderName(std::string_view folder) {
    if (folder.starts_with(".mount_") || folder.starts_with("tmp."))
        return {};
    if (const std::size_t dash = folder.find('-');
        dash != std::string_view::npos && isHash(folder.substr(0, dash)))
        folder.remove_prefix(dash + 1);
    if (isVersion(folder) || isHash(folder))
        return {};
    const std::string_view name = withoutNumber(withoutVersion(folder, "-_"));
    return isVersion(name) || isHash(name) ? std::string_view() : name;
}

std::string_view stableFolderAbove(std::string_view path) {
    std::string_view name;
    for (path = folderName(path); !path.empty() && name.empty(); path = folderName(path))
        name = stableFolderName(fileName(path));
    return name;
}
