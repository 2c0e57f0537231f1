#pragma once

#include "framework/logviewer/LogRecord.h"
#include "platform/base/Utf8.h"

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

/// The plain way to read a log: the whole text at once, line by line, by the C library's functions.
namespace plain {

using Records = std::vector<QN::logviewer::LogRecord>;

inline bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        if (!platform::takeUtf8(text).code)
            return false;
    }
    return true;
}

inline std::uint32_t levelOf(char letter) {
    const std::string_view letters = "CEW-U-----V----DT";
    const std::size_t level = letters.find(letter);
    return letter == '-' || level == std::string_view::npos ? 3 : static_cast<std::uint32_t>(level);
}

inline bool readDate(const std::string& line, std::int64_t& base) {
    std::tm time{};
    unsigned n[6];
    int offset = 0;
    if (std::sscanf(line.c_str(), "%u-%u-%u %u:%u:%u %d", &n[0], &n[1], &n[2], &n[3], &n[4], &n[5],
                    &offset) != 7)
        return false;
    time.tm_year = static_cast<int>(n[0]);
    time.tm_mon = static_cast<int>(n[1]);
    time.tm_mday = static_cast<int>(n[2]);
    time.tm_hour = static_cast<int>(n[3]);
    time.tm_min = static_cast<int>(n[4]);
    time.tm_sec = static_cast<int>(n[5]);
    base = ::timegm(&time);
    return true;
}

inline bool readMessage(const std::string& line, std::int64_t base, Records& records) {
    unsigned minute = 0;
    unsigned second = 0;
    unsigned milliseconds = 0;
    if (std::sscanf(line.c_str(), ":%u:%u.%u", &minute, &second, &milliseconds) != 3)
        return false;
    const bool hasTag = line.size() >= 15 && line[12] == '[' && line[14] == ']';
    const std::size_t start = hasTag ? 16 : 12;
    records.push_back({.time = base + std::int64_t{minute} * 60 + second,
                       .milliseconds = milliseconds,
                       .level = hasTag ? levelOf(line[13]) : 3,
                       .text = line.size() > start ? line.substr(start) : std::string(),
                       .minute = minute,
                       .second = second});
    return true;
}

/// Lines that are not UTF-8 are left out and counted.
inline Records parse(std::string_view text, std::uint64_t& dropped) {
    Records records;
    bool hasDate = false;
    std::int64_t base = 0;
    for (std::size_t end = 0; (end = text.find('\n')) != std::string_view::npos;
         text.remove_prefix(end + 1)) {
        const std::string line(text.substr(0, end));
        if (!isUtf8(line)) {
            ++dropped;
        } else if (line.starts_with(':')) {
            if (!hasDate)
                return records;
            readMessage(line, base, records);
        } else if (readDate(line, base)) {
            hasDate = true;
        } else if (records.empty()) {
            return records;
        } else {
            records.back().text += '\n' + line;
        }
    }
    return records;
}

} // namespace plain
