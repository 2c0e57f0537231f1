#include "framework/logviewer/LogRecord.h"

#include "framework/logviewer/Utf8Check.h"

#include <algorithm>
#include <utility>

namespace QN::logviewer {

namespace {

constexpr std::int64_t secondsPerMinute = 60;

/// The line without the beginning of a character at its end, which a cut may have left.
std::string_view wholeCharacters(std::string_view line) {
    constexpr std::size_t longestCharacter = 4;
    for (std::size_t cut = 0; cut < longestCharacter && cut < line.size(); ++cut) {
        const auto byte = static_cast<unsigned char>(line[line.size() - 1 - cut]);
        if (byte < 0x80)
            return line.substr(0, line.size() - cut);
        if (byte >= 0xC0) {
            const std::string_view shorter = line.substr(0, line.size() - 1 - cut);
            Utf8Check check;
            check.take(line.substr(shorter.size()));
            return check.isComplete() ? line : shorter;
        }
    }
    return line;
}

std::string_view takeLine(std::string_view& bytes) {
    const std::size_t size = bytes.find('\n');
    if (size == std::string_view::npos)
        return wholeCharacters(std::exchange(bytes, {}));
    const std::string_view line = bytes.substr(0, size);
    bytes.remove_prefix(size + 1);
    return line;
}

} // namespace

LogRecord readRecord(std::string_view bytes, const LogHour& hour) {
    LogRecord record;
    bool isFirst = true;
    while (!bytes.empty()) {
        const std::string_view text = takeLine(bytes);
        const LogLine line = LogLineScan::lineOf(text);
        if (isFirst) {
            if (line.kind != LogLine::Kind::message)
                return {};
            record.minute = line.minute;
            record.second = line.second;
            record.milliseconds = line.milliseconds;
            record.level = line.level;
            record.time = hour.base() + line.minute * secondsPerMinute + line.second;
            record.text = text.substr(std::min(line.textStart, text.size()));
        } else if (line.kind == LogLine::Kind::further) {
            record.text += '\n';
            record.text += text;
        } else if (line.kind == LogLine::Kind::message) {
            return record;
        }
        isFirst = false;
    }
    return record;
}

} // namespace QN::logviewer
