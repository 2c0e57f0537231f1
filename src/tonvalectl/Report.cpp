#include "tonvalectl/Report.h"

#include "platform/base/HarmlessText.h"
#include "platform/base/Utf8.h"
#include "platform/language/PlainTexts.h"
#include "tonvalectl/TextWidth.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <numeric>
#include <tuple>

namespace {

using Row = std::array<std::string, 5>;

constexpr std::string_view columnGap = "  ";
constexpr std::size_t leastNameWidth = 8;

std::string percent(int number) {
    return std::to_string(number) + "%";
}

/// In the order of the columns.
Row rowOf(const CtlProgram& program) {
    const bool runs = program.isRunning();
    return {platform::shownLine(program.name), percent(program.setting.percent),
            program.setting.muted ? PlainTexts::tr("yes") : PlainTexts::tr("no"),
            runs ? percent(program.activity) : "-", runs ? std::to_string(program.pid) : "-"};
}

using Widths = std::array<std::size_t, std::tuple_size_v<Row>>;

Widths widthsOf(const std::vector<Row>& rows) {
    Widths widths{};
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], TextWidth::columns(row[i]));
    }
    return widths;
}

/// Shortens the names so that a row has at most `columns`, if they are what makes it longer.
void cutNames(std::vector<Row>& rows, std::size_t columns) {
    const Widths widths = widthsOf(rows);
    const std::size_t others =
        std::accumulate(widths.begin() + 1, widths.end(), columnGap.size() * (widths.size() - 1));
    const std::size_t most = std::max(columns, others + leastNameWidth) - others;
    for (Row& row : rows)
        row[0] = TextWidth::cut(row[0], most);
}

std::string aligned(const std::vector<Row>& rows) {
    const Widths widths = widthsOf(rows);
    std::string text;
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string fill(widths[i] - TextWidth::columns(row[i]), ' ');
            text += i == 0 ? row[i] + fill // numbers stand to the right
                           : std::string(columnGap) + fill + row[i];
        }
        text += '\n';
    }
    return text;
}

/// As JSON has it, in units of UTF-16.
std::string escaped(char32_t character) {
    constexpr char32_t plane = 0x10000;
    std::vector<unsigned> units{static_cast<unsigned>(character)};
    if (character >= plane)
        units = {0xD800U + static_cast<unsigned>((character - plane) >> 10U),
                 0xDC00U + static_cast<unsigned>((character - plane) & 0x3FFU)};
    std::string text;
    for (const unsigned unit : units) {
        std::array<char, 8> escape{};
        std::snprintf(escape.data(), escape.size(), "\\u%04x", unit);
        text += escape.data();
    }
    return text;
}

/// The whole of a text, with an escape for each character that a terminal should not get.
std::string quoted(std::string_view text) {
    std::string quoted = "\"";
    while (!text.empty()) {
        const auto [bytes, character] = platform::takeUtf8(text);
        if (bytes == "\"" || bytes == "\\")
            quoted += '\\';
        if (platform::shownLine(bytes) == bytes)
            quoted += bytes;
        else
            quoted += escaped(character.value_or(U'\uFFFD'));
    }
    return quoted + '"';
}

std::string member(const char* key, const std::string& value) {
    return quoted(key) + ": " + value;
}

const char* truth(bool value) {
    return value ? "true" : "false";
}

/// An event has no level, which is only known at the time of a request.
enum class Level { told, leftOut };

std::string members(const CtlProgram& program, Level level = Level::told) {
    const bool runs = program.isRunning();
    std::string text;
    for (const auto& [key, value] : std::initializer_list<std::pair<const char*, std::string>>{
             {"name", quoted(program.name)},
             {"volume", std::to_string(program.setting.percent)},
             {"muted", truth(program.setting.muted)},
             {"activity", std::to_string(program.activity)},
             {"playing", truth(program.playing)},
             {"pid", runs ? std::to_string(program.pid) : "null"},
             {"running", truth(runs)},
             {"icon", quoted(program.icon)},
             {"controllable", truth(program.controllable)},
             {"reason", quoted(program.reason)}}) {
        if (level == Level::told || std::string_view(key) != "activity")
            text += (text.empty() ? "" : ", ") + member(key, value);
    }
    return text;
}

template <typename Items, typename ToText>
std::string array(const Items& items, const ToText& toText) {
    std::string text;
    for (const auto& item : items)
        text += (text.empty() ? "\n  " : ",\n  ") + toText(item);
    return "[" + text + (text.empty() ? "]\n" : "\n]\n");
}

} // namespace

std::string Report::table(const std::vector<CtlProgram>& programs,
                          std::optional<std::size_t> columns) {
    std::vector<Row> rows{{PlainTexts::tr("NAME"), PlainTexts::tr("VOLUME"),
                           PlainTexts::tr("MUTED"), PlainTexts::tr("ACTIVITY"),
                           PlainTexts::tr("PID")}};
    for (const CtlProgram& program : programs)
        rows.push_back(rowOf(program));
    if (columns)
        cutNames(rows, *columns);
    return aligned(rows);
}

std::string Report::line(const CtlProgram& program) {
    std::string text = percent(program.setting.percent);
    if (program.setting.muted)
        text += ' ' + PlainTexts::tr("muted");
    return text + '\n';
}

std::string Report::names(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names)
        text += platform::shownLine(name) + '\n';
    return text;
}

std::string Report::json(const CtlProgram& program) {
    return "{" + members(program) + "}\n";
}

std::string Report::json(const std::vector<CtlProgram>& programs) {
    return array(programs, [](const CtlProgram& each) { return "{" + members(each) + "}"; });
}

std::string Report::json(const std::vector<std::string>& names) {
    return array(names, [](const std::string& each) { return quoted(each); });
}

std::string Report::event(std::string_view what, const CtlProgram& program) {
    std::string text =
        PlainTexts::tr(std::string(what).c_str()) + ' ' + platform::shownLine(program.name);
    if (what == "removed")
        return text + '\n';
    text += ' ' + percent(program.setting.percent);
    if (program.setting.muted)
        text += ' ' + PlainTexts::tr("muted");
    if (program.playing)
        text += ' ' + PlainTexts::tr("playing");
    return text + '\n';
}

std::string Report::jsonEvent(std::string_view what, const CtlProgram& program) {
    return "{" + member("event", quoted(what)) + ", " + members(program, Level::leftOut) + "}\n";
}
