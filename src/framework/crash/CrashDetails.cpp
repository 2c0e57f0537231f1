#include "framework/crash/CrashDetails.h"

#include "platform/crash/CrashRecord.h"

#include <algorithm>
#include <charconv>
#include <map>

namespace {

/// Takes what comes before the next blank.
std::string_view takeWord(std::string_view& text) {
    const std::size_t end = std::min(text.find(' '), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return word;
}

template <typename Number>
Number numberOf(std::string_view text, int base = 10) {
    if (text.starts_with("0x"))
        text.remove_prefix(2);
    Number number{};
    std::from_chars(text.data(), text.data() + text.size(), number, base);
    return number;
}

std::uint64_t hex(std::string_view text) {
    return numberOf<std::uint64_t>(text, 16);
}

/// "55d0c0a00000-55d0c0a21000 r-xp 00002000 fe:01 1234      /usr/bin/program"
CrashMapping mappingIn(std::string_view line) {
    CrashMapping mapping;
    std::string_view range = takeWord(line);
    const std::size_t dash = std::min(range.find('-'), range.size());
    mapping.begin = hex(range.substr(0, dash));
    mapping.end = dash < range.size() ? hex(range.substr(dash + 1)) : 0;
    mapping.permissions = takeWord(line);
    mapping.offset = hex(takeWord(line));
    takeWord(line); // the device
    takeWord(line); // the inode
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    mapping.path = line;
    return mapping;
}

using Text = std::string CrashDetails::*;
using Number = std::int64_t CrashDetails::*;

const std::map<std::string_view, Text> texts{
    {"program", &CrashDetails::program},
    {"version", &CrashDetails::version},
    {"build", &CrashDetails::build},
    {"kernel", &CrashDetails::kernel},
    {"machine", &CrashDetails::machine},
    {"desktop", &CrashDetails::desktop},
    {"session", &CrashDetails::session},
    {"thread", &CrashDetails::thread},
    {"exception", &CrashDetails::exceptionType},
    {"message", &CrashDetails::exceptionText},
    {"log", &CrashDetails::lastLine},
};

const std::map<std::string_view, Number> numbers{
    {"pid", &CrashDetails::pid},
    {"started", &CrashDetails::started},
    {"time", &CrashDetails::time},
    {"uptime", &CrashDetails::uptime},
};

void takeList(CrashDetails& details, std::string_view key, std::string_view value) {
    if (key == "frame") {
        details.frames.push_back(hex(value));
    } else if (key == "map") {
        details.mappings.push_back(mappingIn(value));
    } else if (key == "module") {
        const std::uint64_t base = hex(takeWord(value));
        details.buildIds.emplace_back(base, value == "-" ? "" : value);
    } else if (key == "register") {
        const std::string name(takeWord(value));
        details.registers.emplace_back(name, hex(value));
    }
}

void take(CrashDetails& details, std::string_view line) {
    const std::string_view key = takeWord(line);
    if (const auto text = texts.find(key); text != texts.end())
        details.*text->second = line;
    else if (const auto number = numbers.find(key); number != numbers.end())
        details.*number->second = numberOf<std::int64_t>(line);
    else if (key == "signal")
        details.signal = numberOf<int>(line);
    else if (key == "code")
        details.code = numberOf<int>(line);
    else if (key == "address")
        details.faultAddress = hex(line);
    else if (key == "more")
        details.hasMoreFrames = true;
    else if (key == platform::crashRecordEnd)
        details.isWhole = true;
    else
        takeList(details, key, line);
}

} // namespace

/// A line that was cut may be wrong: only whole ones count.
std::optional<CrashDetails> CrashDetails::parse(std::string_view record) {
    if (!record.starts_with(std::string(platform::crashRecordTitle).append("\n")))
        return std::nullopt;
    CrashDetails details;
    for (std::size_t end = record.find('\n'); end != std::string_view::npos;
         end = record.find('\n')) {
        take(details, record.substr(0, end));
        record.remove_prefix(end + 1);
    }
    return details;
}

const CrashMapping* CrashDetails::mappingOf(std::uint64_t address) const noexcept {
    const auto found =
        std::find_if(mappings.begin(), mappings.end(),
                     [address](const CrashMapping& each) { return each.has(address); });
    return found != mappings.end() ? &*found : nullptr;
}

std::string CrashDetails::buildIdOf(std::uint64_t address) const {
    const CrashMapping* const part = mappingOf(address);
    if (part == nullptr)
        return {};
    const auto module = std::find_if(buildIds.begin(), buildIds.end(), [part](const auto& each) {
        return each.first == part->begin - part->offset;
    });
    return module != buildIds.end() ? module->second : std::string();
}
