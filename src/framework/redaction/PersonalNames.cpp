#include "framework/redaction/PersonalNames.h"

#include "framework/redaction/Characters.h"
#include "framework/redaction/FieldKeys.h"

#include "platform/base/Utf8.h"

#include <algorithm>
#include <cstdio>
#include <set>

using namespace characters;

namespace {

/// Words that stand in our files with another meaning, so that replacing them everywhere would
/// spoil them: in names of devices ("Dummy-Driver" is PipeWire's), of programs, and in log lines.
bool isOrdinary(const std::string& word) {
    static const std::set<std::string, std::less<>> words{
        "access",      "active",    "admin",      "administrator", "alpine",   "alsa",
        "analog",      "android",   "apple",      "application",   "arch",     "audio",
        "bash",        "beta",      "bluetooth",  "boot",          "build",    "bus",
        "capture",     "card",      "channel",    "chrome",        "chromium", "client",
        "computer",    "connect",   "core",       "daemon",        "data",     "date",
        "dbus",        "debian",    "debug",      "default",       "demo",     "desktop",
        "dev",         "device",    "digital",    "driver",        "dummy",    "error",
        "false",       "fedora",    "file",       "firefox",       "format",   "front",
        "generic",     "gentoo",    "gnome",      "google",        "guest",    "hdmi",
        "headset",     "helper",    "home",       "host",          "idle",     "info",
        "input",       "installer", "intel",      "internal",      "kernel",   "laptop",
        "left",        "level",     "library",    "line",          "linux",    "live",
        "load",        "local",     "localhost",  "log",           "machine",  "mail",
        "main",        "manager",   "manjaro",    "mark",          "master",   "max",
        "media",       "memory",    "mint",       "mixer",         "mode",     "module",
        "monitor",     "music",     "mute",       "name",          "network",  "nixos",
        "node",        "nobody",    "none",       "null",          "office",   "opensuse",
        "output",      "owner",     "path",       "person",        "phone",    "pipewire",
        "play",        "playback",  "player",     "port",          "portal",   "priority",
        "process",     "processor", "product",    "profile",       "pulse",    "python",
        "quarnel",     "ready",     "rear",       "right",         "root",     "running",
        "sample",      "server",    "service",    "session",       "sink",     "socket",
        "sound",       "source",    "speaker",    "state",         "stereo",   "stream",
        "studio",      "suspended", "system",     "systemd",       "task",     "test",
        "thread",      "time",      "tonvale",    "true",          "type",     "ubuntu",
        "usb",         "user",      "users",      "value",         "vendor",   "version",
        "video",       "volume",    "warning",    "web",           "window",   "wire",
        "wireplumber", "work",      "workstation"};
    return words.contains(word);
}

bool isTooShort(std::string_view name) {
    constexpr std::ptrdiff_t fewestLetters = 3;
    return std::count_if(name.begin(), name.end(), [](char byte) {
               return isLetter(byte) || static_cast<unsigned char>(byte) >= 0x80;
           }) < fewestLetters;
}

std::string percentEscaped(std::string_view text) {
    std::string result;
    for (const char byte : text) {
        if (isAlphanumeric(byte) ||
            std::string_view("-._~/").find(byte) != std::string_view::npos) {
            result += byte;
            continue;
        }
        char escape[4];
        std::snprintf(escape, sizeof(escape), "%%%02X",
                      static_cast<unsigned>(static_cast<unsigned char>(byte)));
        result += escape;
    }
    return result;
}

void appendUnit(std::string& text, unsigned unit) {
    char escape[7];
    std::snprintf(escape, sizeof(escape), "\\u%04x", unit & 0xffffU);
    text += escape;
}

/// With all characters beyond ASCII escaped.
std::string jsonEscaped(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const platform::Utf8Character character = platform::takeUtf8(text);
        const auto code = static_cast<unsigned>(character.code.value_or(0));
        if (code < 0x80) {
            result += character.bytes;
        } else if (code < 0x10000) {
            appendUnit(result, code);
        } else {
            appendUnit(result, 0xd800U + ((code - 0x10000U) >> 10U));
            appendUnit(result, 0xdc00U + ((code - 0x10000U) & 0x3ffU));
        }
    }
    return result;
}

std::string replaced(std::string text, char one, std::string_view by) {
    for (std::size_t i = text.find(one); i != std::string::npos; i = text.find(one, i + by.size()))
        text.replace(i, 1, by);
    return text;
}

/// Whether the path before `place` is that of a folder of homes or the like.
bool isBelowHomes(std::string_view text, std::size_t place) {
    constexpr std::size_t reach = 16;
    std::string before =
        lowered(text.substr(place - std::min(place, reach), std::min(place, reach)));
    std::erase(before, '\\');
    for (std::size_t i = before.find("%2f"); i != std::string::npos; i = before.find("%2f")) {
        before[i] = '/';
        before.erase(i + 1, 2);
    }
    constexpr std::array<std::string_view, 6> parents{"/home/", "/media/",    "/users/",
                                                      "/mail/", "/crontabs/", "/homes/"};
    return std::any_of(parents.begin(), parents.end(),
                       [&](std::string_view parent) { return before.ends_with(parent); });
}

/// "Nov  7 05:30:12 HOST program: …", "2026-11-07T05:30:12+0000 HOST program: …".
bool isHostOfLogLine(std::string_view text, std::size_t place) noexcept {
    constexpr std::size_t reach = 40;
    const std::size_t from = place - std::min(place, reach);
    const std::string_view line =
        text.substr(from, place - from).substr(text.substr(from, place - from).rfind('\n') + 1);
    const auto isTimeAt = [&](std::size_t i) {
        return line.size() >= i + 9 && isDigit(line[i]) && isDigit(line[i + 1]) &&
               line[i + 2] == ':' && isDigit(line[i + 3]) && isDigit(line[i + 4]) &&
               line[i + 5] == ':' && isDigit(line[i + 6]) && isDigit(line[i + 7]);
    };
    if (line.size() == 16 && line[3] == ' ' && line[15] == ' ')
        return isTimeAt(7);
    return line.size() > 20 && line[4] == '-' && line.find(' ') == line.size() - 1 && isTimeAt(11);
}

/// Not "user@1000.service".
bool isUserOfAddress(std::string_view text, std::size_t end) noexcept {
    if (characters::at(text, end) != '@' || !isWord(characters::at(text, end + 1)))
        return false;
    std::size_t after = end + 1;
    while (isDigit(characters::at(text, after)))
        ++after;
    const std::string_view rest = text.substr(after);
    return !rest.starts_with(".service") && !rest.starts_with(".slice");
}

bool isHostOfAddress(std::string_view text, std::size_t place) noexcept {
    return place >= 2 && text[place - 1] == '@' && isWord(text[place - 2]);
}

/// The root of a list of hardware: `<node id="HOST" claimed="true" class="system"`.
bool isRootNode(std::string_view text, std::size_t place, std::size_t end) noexcept {
    constexpr std::string_view begin = "<node id=\"";
    return place >= begin.size() && text.substr(place - begin.size(), begin.size()) == begin &&
           text.substr(end, text.find('>', end) - end).find("class=\"system\"") !=
               std::string_view::npos;
}

bool isPlaceOfName(RedactionKind kind, std::string_view text, std::size_t place, std::size_t end) {
    if (kind == RedactionKind::userName)
        return isUserOfAddress(text, end) || isBelowHomes(text, place) ||
               isUserKey(keyBefore(text, place));
    return isHostOfAddress(text, place) || isHostOfLogLine(text, place) ||
           isRootNode(text, place, end) || isHostKey(keyBefore(text, place));
}

bool isTelling(const std::string& serialNumber) {
    constexpr std::size_t shortest = 5;
    return serialNumber.size() >= shortest && !isOrdinary(lowered(serialNumber)) &&
           std::any_of(serialNumber.begin(), serialNumber.end(), isDigit) &&
           serialNumber.find(':') == std::string::npos && // the place of a controller
           serialNumber.find_first_not_of(serialNumber.front()) != std::string::npos;
}

} // namespace

PersonalNames::PersonalNames(const platform::PersonalFacts& facts) {
    if (facts.home.size() > 1)
        add(RedactionKind::homeFolder, facts.home, true);
    addName(RedactionKind::userName, facts.userName);
    if (!isTooShort(facts.realName))
        add(RedactionKind::userName, facts.realName, facts.realName.find(' ') != std::string::npos);
    addName(RedactionKind::hostName, facts.hostName);
    if (const std::size_t dot = facts.hostName.find('.'); dot != std::string::npos)
        addName(RedactionKind::hostName, facts.hostName.substr(0, dot));
    for (const std::string& id : facts.machineIds) {
        add(RedactionKind::machineId, id, true);
        add(RedactionKind::machineId, replaced(id, '-', ""), true);
    }
    for (const std::string& number : facts.serialNumbers) {
        if (isTelling(number))
            add(RedactionKind::serialNumber, number, true);
    }
    for (auto& indices : byFirstByte_) {
        std::stable_sort(indices.begin(), indices.end(),
                         [this](std::size_t one, std::size_t other) {
                             return forms_[one].text.size() > forms_[other].text.size();
                         });
    }
}

void PersonalNames::addName(RedactionKind kind, const std::string& name) {
    add(kind, name, !isTooShort(name) && !isOrdinary(lowered(name)));
}

void PersonalNames::add(RedactionKind kind, const std::string& text, bool anywhere) {
    if (text.empty())
        return;
    const std::set<std::string> forms{lowered(text), lowered(percentEscaped(text)),
                                      lowered(jsonEscaped(text)),
                                      lowered(replaced(jsonEscaped(text), '/', "\\/")),
                                      lowered(replaced(percentEscaped(text), '/', "%2f"))};
    for (const std::string& form : forms) {
        byFirstByte_[static_cast<unsigned char>(form.front())].push_back(forms_.size());
        const char upper = form.front();
        if (isLetter(upper))
            byFirstByte_[static_cast<unsigned char>(upper - ('a' - 'A'))].push_back(forms_.size());
        forms_.push_back({kind, form, anywhere});
    }
}

std::optional<PersonalNames::Found> PersonalNames::at(std::string_view text,
                                                      std::size_t place) const {
    for (const std::size_t index : byFirstByte_[static_cast<unsigned char>(text[place])]) {
        const Form& form = forms_[index];
        const std::size_t end = place + form.text.size();
        const char next = characters::at(text, end);
        const bool goesOn =
            form.kind == RedactionKind::serialNumber ? isAlphanumeric(next) : isWord(next);
        if (end > text.size() || goesOn)
            continue;
        const std::string_view here = text.substr(place, form.text.size());
        const bool same = std::equal(here.begin(), here.end(), form.text.begin(),
                                     [](char one, char other) { return lower(one) == other; });
        if (same && (form.anywhere || isPlaceOfName(form.kind, text, place, end)))
            return Found{form.kind, form.text.size()};
    }
    return std::nullopt;
}
