#include "framework/logviewer/LogLineScan.h"

#include <algorithm>
#include <ctime>

namespace QN::logviewer {

namespace {

constexpr std::size_t tagStart = 12;
constexpr std::size_t textAfterTag = 16;
constexpr std::uint32_t usualLevel = 3;

/// By the letter of its tag.
std::uint32_t levelOf(char letter) {
    switch (letter) {
    case 'C':
        return 0;
    case 'E':
        return 1;
    case 'W':
        return 2;
    case 'U':
        return 4;
    case 'V':
        return 10;
    case 'D':
        return 15;
    case 'T':
        return 16;
    default:
        return usualLevel;
    }
}

/// -1 for what is no digit.
constexpr int digit(char byte) {
    return byte >= '0' && byte <= '9' ? byte - '0' : -1;
}

} // namespace

std::int64_t LogHour::base() const noexcept {
    std::tm time{};
    time.tm_year = static_cast<int>(year);
    time.tm_mon = static_cast<int>(month);
    time.tm_mday = static_cast<int>(day);
    time.tm_hour = static_cast<int>(hour);
    time.tm_min = static_cast<int>(minute);
    time.tm_sec = static_cast<int>(second);
    return ::timegm(&time);
}

/// The time that a line begins with in the form that the log gives it, ":05:07.312" or ":05:07.3",
/// and that ends within the line. Nearly all lines have it, and it is read much faster than others.
std::optional<LogLineScan::Time> LogLineScan::usualTime(std::string_view line) noexcept {
    constexpr std::size_t least = 11;
    if (line.size() < least || line[0] != ':' || line[3] != ':' || line[6] != '.')
        return std::nullopt;
    const auto pair = [&](std::size_t place) {
        const int tens = digit(line[place]);
        const int ones = digit(line[place + 1]);
        return tens < 0 || ones < 0 ? -1 : 10 * tens + ones;
    };
    const int minute = pair(1);
    const int second = pair(4);
    int milliseconds = digit(line[7]);
    std::size_t end = 8;
    for (; end < least && digit(line[end]) >= 0; ++end)
        milliseconds = 10 * milliseconds + digit(line[end]);
    if (minute < 0 || second < 0 || milliseconds < 0 || end == least)
        return std::nullopt;
    return Time{static_cast<std::uint32_t>(minute), static_cast<std::uint32_t>(second),
                static_cast<std::uint32_t>(milliseconds)};
}

void LogLineScan::take(std::string_view part) noexcept {
    if (part.empty())
        return;
    if (size_ == 0)
        usualTime_ = usualTime(part);
    if (size_ < headSize) {
        const auto start = static_cast<std::size_t>(size_);
        const std::string_view head = part.substr(0, headSize - start);
        std::ranges::copy(head, head_.begin() + static_cast<std::ptrdiff_t>(start));
    }
    size_ += part.size();
    if (!usualTime_)
        (head_[0] == ':' ? time_ : date_).take(part);
    utf8_.take(part);
}

LogLine LogLineScan::finish() noexcept {
    const LogLine result = line();
    size_ = 0;
    usualTime_.reset();
    time_.reset();
    date_.reset();
    utf8_.reset();
    return result;
}

LogLine LogLineScan::line() const noexcept {
    constexpr std::size_t dateNumbers = 7;
    if (!utf8_.isComplete())
        return {.kind = LogLine::Kind::notUtf8};
    if (size_ > 0 && head_[0] == ':')
        return messageLine();
    if (size_ == 0 || date_.count() < dateNumbers)
        return {.kind = LogLine::Kind::further};
    LogLine line{.kind = LogLine::Kind::date};
    line.hour = {date_.number(0), date_.number(1), date_.number(2),
                 date_.number(3), date_.number(4), date_.number(5)};
    return line;
}

LogLine LogLineScan::messageLine() const noexcept {
    constexpr std::size_t timeNumbers = 3;
    if (!usualTime_ && time_.count() < timeNumbers)
        return {.kind = LogLine::Kind::unknown};
    const Time time = usualTime_.value_or(Time{time_.number(0), time_.number(1), time_.number(2)});
    const bool hasTag = size_ >= headSize && head_[tagStart] == '[' && head_[tagStart + 2] == ']';
    LogLine line{.kind = LogLine::Kind::message};
    line.level = hasTag ? levelOf(head_[tagStart + 1]) : usualLevel;
    line.minute = time[0];
    line.second = time[1];
    line.milliseconds = time[2];
    line.textStart = hasTag ? textAfterTag : tagStart;
    return line;
}

LogLine LogLineScan::lineOf(std::string_view line) noexcept {
    LogLineScan scan;
    scan.take(line);
    return scan.finish();
}

} // namespace QN::logviewer
