#include "framework/log/LineComposer.h"

#include "framework/log/qnlog.h"

#include "platform/base/HarmlessText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <span>

namespace QN::log {

namespace {

constexpr std::size_t longestHead = 70; // date line, time and tag

std::string_view tagOf(std::uint32_t level) noexcept {
    switch (level) {
    case qnlog_critical:
        return "[C] ";
    case qnlog_error:
        return "[E] ";
    case qnlog_warning:
        return "[W] ";
    case qnlog_information:
        return "[I] ";
    case qnlog_user:
        return "[U] ";
    case qnlog_verbose:
        return "[V] ";
    case qnlog_debug:
        return "[D] ";
    default:
        return level > 16 && level != qnlog_always ? "[T] " : "";
    }
}

int offsetMinutes(const std::tm& local) noexcept {
    return static_cast<int>(local.tm_gmtoff / 60);
}

/// Tells hours apart; that of last year counts as the same.
std::int64_t hourKey(const std::tm& local) noexcept {
    const int offset = offsetMinutes(local);
    const auto part = [](int value) { return static_cast<std::uint64_t>(value); };
    const std::uint64_t key = part(local.tm_hour) | part(local.tm_mday) << 8 |
                              part(local.tm_mon) << 16 | (part(offset) & 0xFFFF) << 24 |
                              (offset < 0 ? std::uint64_t{1} << 63 : 0);
    return static_cast<std::int64_t>(key);
}

template <typename... Arguments>
void appendFormatted(std::string& line, const char* format, Arguments... arguments) {
    std::array<char, longestHead> buffer{};
    const int length = std::snprintf(buffer.data(), buffer.size(), format, arguments...);
    if (length > 0)
        line.append(buffer.data(), std::min(buffer.size() - 1, static_cast<std::size_t>(length)));
}

} // namespace

std::string_view LineComposer::compose(std::uint32_t level, platform::WallClock::time_point time,
                                       std::string_view text) {
    using namespace std::chrono;
    const auto second = floor<seconds>(time);
    const std::tm& local = localTime_.of(second.time_since_epoch().count());
    composedKey_ = hourKey(local);
    line_.clear();
    line_.reserve(text.size() + longestHead);
    if (composedKey_ != lastHourKey_)
        appendDateLine(local);
    appendHead(local, time - second, level);
    appendText(text);
    return line_;
}

/// The offset is printed as a number of hours, not padded, with the minutes behind it.
void LineComposer::appendDateLine(const std::tm& local) {
    const int offset = offsetMinutes(local);
    appendFormatted(line_, "%d-%02d-%02d %02d:00:00 %+02ld%02d\n", local.tm_year + 1900,
                    local.tm_mon + 1, local.tm_mday, local.tm_hour, long{offset / 60},
                    std::abs(offset % 60));
}

void LineComposer::appendHead(const std::tm& local, std::chrono::microseconds fraction,
                              std::uint32_t level) {
    // ":%02d:%02d.%-3d: ", by hand because it is in every line
    std::array<char, 12> head{':', '0', '0', ':', '0', '0', '.', ' ', ' ', ' ', ':', ' '};
    const auto put = [](char* at, int number) {
        at[0] = static_cast<char>('0' + number / 10);
        at[1] = static_cast<char>('0' + number % 10);
    };
    put(&head[1], local.tm_min);
    put(&head[4], local.tm_sec);
    std::to_chars(&head[7], &head[10], fraction.count() / 1000);
    line_.append(head.data(), head.size());
    line_ += tagOf(level);
}

void LineComposer::appendText(std::string_view text) {
    const std::size_t begin = line_.size();
    line_ += text;
    platform::makeHarmless(std::span(line_).subspan(begin), platform::ControlsKept::lineFeedAndTab);
    if (line_.back() != '\n')
        line_ += '\n';
}

} // namespace QN::log
