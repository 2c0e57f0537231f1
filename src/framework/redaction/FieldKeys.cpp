#include "framework/redaction/FieldKeys.h"

#include "framework/redaction/Characters.h"

#include <algorithm>
#include <array>

using namespace characters;

namespace {

bool isKeyByte(char byte) noexcept {
    return isAlphanumeric(byte) || byte == '_' || byte == '-' || byte == '.';
}
bool isSeparator(char byte) noexcept {
    return byte == '=' || byte == ':' || byte == '>';
}
bool isFiller(char byte) noexcept {
    return byte == ' ' || byte == '"' || byte == '\'' || byte == '\\' || byte == '\t';
}

/// The place behind the last byte before `place` that is no filler.
std::size_t skipFillerBack(std::string_view text, std::size_t place) noexcept {
    constexpr int most = 16;
    for (int i = 0; i < most && place > 0 && isFiller(text[place - 1]); ++i)
        --place;
    return place;
}

/// The word that ends at `end`; moves it to the word's begin.
std::string_view wordBack(std::string_view text, std::size_t& end) noexcept {
    constexpr std::size_t longest = 48;
    const std::size_t last = end;
    while (end > 0 && last - end < longest && isKeyByte(text[end - 1]))
        --end;
    return text.substr(end, last - end);
}

/// The word before the filler that ends at `end`.
std::string_view earlierWord(std::string_view text, std::size_t end) noexcept {
    end = skipFillerBack(text, end);
    return wordBack(text, end);
}

template <std::size_t N>
bool endsWithAny(std::string_view key, const std::array<std::string_view, N>& endings) noexcept {
    return std::any_of(endings.begin(), endings.end(),
                       [&](std::string_view ending) { return key.ends_with(ending); });
}

bool saysNothing(std::string_view value) {
    constexpr std::array<std::string_view, 14> empty{
        "none", "null",  "(null)", "unknown",     "n/a",  "yes",     "no",
        "true", "false", "off",    "unspecified", "auto", "default", "default string"};
    const std::string plain = lowered(value);
    const bool isShortNumber =
        value.size() <= 3 && std::all_of(value.begin(), value.end(), isDigit);
    return value.size() < 2 || isShortNumber || value.front() == '[' || value.front() == '<' ||
           value.front() == '{' || std::find(empty.begin(), empty.end(), plain) != empty.end();
}

/// Where the value that begins at `begin` ends.
std::size_t endOfValue(std::string_view text, std::size_t begin, char quote, bool isText) noexcept {
    std::size_t end = begin;
    for (; end < text.size() && text[end] != '\n' && text[end] != '\r' && text[end] != '<'; ++end) {
        const char byte = text[end];
        if (quote != '\0' ? byte == quote : !isText && (byte == ' ' || byte == ',' || byte == ';'))
            break;
        if (quote == '\0' && (byte == '"' || byte == '\t'))
            break;
    }
    while (end > begin && (text[end - 1] == '\\' || text[end - 1] == ' '))
        --end;
    return end;
}

} // namespace

std::string keyBefore(std::string_view text, std::size_t place) {
    std::size_t end = skipFillerBack(text, place);
    if (end == 0 || !isSeparator(text[end - 1]))
        return {};
    end = skipFillerBack(text, end - 1);
    std::string_view word = wordBack(text, end);
    // An attribute of XML, whose key is the attribute before.
    if (word == "value" || word == "content")
        word = earlierWord(text, end);
    std::string key = lowered(word);
    std::replace(key.begin(), key.end(), '-', '_');
    if (key == "number" && lowered(earlierWord(text, end)) == "serial")
        key = "serial_number";
    return key;
}

std::optional<RedactionKind> kindOfKey(std::string_view key) noexcept {
    constexpr std::array<std::string_view, 6> serials{
        "serial", "serial_number", "serialnumber", "serial_short", "device.uuid", "serialno"};
    constexpr std::array<std::string_view, 3> ids{"machine_id", "machineid", "boot_id"};
    constexpr std::array<std::string_view, 16> secrets{
        "token",      "secret",    "password",   "passwd",        "passphrase", "api_key",
        "apikey",     "psk",       "cookie",     "authorization", "bearer",     "credentials",
        "session_id", "sessionid", "access_key", "private_key"};
    constexpr std::array<std::string_view, 6> media{"media.name",   "media.title",
                                                    "media.artist", "media.filename",
                                                    "window.title", "window_title"};
    if (key.size() < 3 || key == "object.serial")
        return std::nullopt;
    if (endsWithAny(key, serials))
        return RedactionKind::serialNumber;
    if (key.ends_with("ssid"))
        return RedactionKind::networkName;
    if (endsWithAny(key, ids))
        return RedactionKind::machineId;
    if (endsWithAny(key, secrets))
        return RedactionKind::token;
    if (endsWithAny(key, media))
        return RedactionKind::mediaName;
    return std::nullopt;
}

bool isUserKey(std::string_view key) noexcept {
    constexpr std::array<std::string_view, 6> users{"user",  "username", "user_name",
                                                    "login", "logname",  "owner"};
    return endsWithAny(key, users);
}

bool isHostKey(std::string_view key) noexcept {
    constexpr std::array<std::string_view, 4> hosts{"host", "hostname", "host_name", "nodename"};
    return endsWithAny(key, hosts);
}

std::optional<Field> fieldAt(std::string_view text, std::size_t place) {
    // The letters that the keys end with keep most separators from being looked at closely.
    const std::size_t before = skipFillerBack(text, place);
    constexpr std::string_view lastLetters = "lrtdonyeks";
    if (before == 0 || lastLetters.find(lower(text[before - 1])) == std::string_view::npos)
        return std::nullopt;
    std::size_t begin = place + 1;
    if (at(text, begin) == ':' || at(text, begin) == '=' || (place > 0 && text[place - 1] == ':'))
        return std::nullopt;
    char quote = '\0';
    while (begin < text.size() && isFiller(text[begin])) {
        if (text[begin] == '"' || text[begin] == '\'') {
            quote = text[begin++];
            break;
        }
        ++begin;
    }
    const std::string key = keyBefore(text, place + 1);
    const auto kind = kindOfKey(key);
    if (!kind)
        return std::nullopt;
    const bool isText = *kind == RedactionKind::networkName || *kind == RedactionKind::mediaName ||
                        key.ends_with("authorization") || key.ends_with("cookie");
    const std::size_t end = endOfValue(text, begin, quote, isText);
    if (saysNothing(text.substr(begin, end - begin)))
        return std::nullopt;
    return Field{*kind, {begin, end}};
}
