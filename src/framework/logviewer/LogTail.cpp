#include "framework/logviewer/LogTail.h"

#include "framework/logviewer/LogParser.h"

#include <algorithm>
#include <string>

namespace QN::logviewer {

namespace {

constexpr std::uint64_t leastTail = std::uint64_t{128} << 10U;
constexpr std::uint64_t mostTail = std::uint64_t{8} << 20U;
constexpr std::uint64_t blockSize = std::uint64_t{256} << 10U;
constexpr std::uint64_t longestDateLine = 512;

struct Line {
    std::string_view text;
    std::size_t start;
};

/// The complete lines of a text, from one that begins at `start` on.
template <typename Use>
void forEachLine(std::string_view text, std::size_t start, const Use& use) {
    for (std::size_t end = 0; (end = text.find('\n', start)) != std::string_view::npos;
         start = end + 1) {
        if (!use(Line{text.substr(start, end - start), start}))
            return;
    }
}

std::size_t afterFirstLineFeed(std::string_view text) {
    return std::min(text.find('\n'), text.size() - 1) + 1;
}

/// Where the first message line begins; nothing without one.
std::optional<std::size_t> firstMessage(std::string_view text) {
    std::optional<std::size_t> found;
    forEachLine(text, afterFirstLineFeed(text), [&](const Line& line) {
        if (LogLineScan::lineOf(line.text).kind == LogLine::Kind::message)
            found = line.start;
        return !found;
    });
    return found;
}

/// The hour of the last date line.
std::optional<LogHour> lastHour(std::string_view text, std::size_t start) {
    std::optional<LogHour> hour;
    forEachLine(text, start, [&](const Line& line) {
        if (line.text.empty() || line.text.front() == ':' || line.text.size() > longestDateLine)
            return true;
        const LogLine scanned = LogLineScan::lineOf(line.text);
        if (scanned.kind == LogLine::Kind::date)
            hour = scanned.hour;
        return true;
    });
    return hour;
}

/// The hour of the last date line that is before `end`, where a line begins.
std::optional<LogHour> lastHourBefore(const LogBytes& file, std::uint64_t end) {
    while (end > 0) {
        const std::uint64_t start = end > blockSize ? end - blockSize : 0;
        const std::string text = file.text(start, static_cast<std::size_t>(end - start));
        if (text.empty())
            return std::nullopt;
        constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
        const bool hasMark = start == 0 && text.starts_with(byteOrderMark);
        const std::size_t first = start > 0 ? afterFirstLineFeed(text)
                                  : hasMark ? byteOrderMark.size()
                                            : 0;
        if (const auto hour = lastHour(text, first))
            return hour;
        if (start == 0)
            return std::nullopt;
        end = start + longestDateLine; // the line that is cut there
    }
    return std::nullopt;
}

} // namespace

std::optional<LogPiece> readTail(const LogBytes& file, std::uint64_t start, std::uint64_t end) {
    for (std::uint64_t size = leastTail; size <= mostTail; size *= 4) {
        if (start + size > end)
            return std::nullopt;
        const std::string text = file.text(end - size, static_cast<std::size_t>(size));
        const auto first = text.empty() ? std::nullopt : firstMessage(text);
        if (!first)
            continue;
        const std::uint64_t offset = end - size + *first;
        const auto hour = lastHourBefore(file, offset);
        if (!hour)
            return std::nullopt;
        LogPiece piece;
        LogParser parser(offset, *hour);
        parser.parse(std::string_view(text).substr(*first), piece);
        return piece;
    }
    return std::nullopt;
}

} // namespace QN::logviewer
