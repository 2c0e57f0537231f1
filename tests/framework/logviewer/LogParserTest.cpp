#include "framework/logviewer/LogParser.h"

#include "framework/logviewer/LogIndex.h"
#include "framework/logviewer/LogRecord.h"
#include "platform/base/Utf8.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>

using namespace QN::logviewer;

namespace {

const std::string date = "2014-03-07 09:00:00 +100\n";
constexpr LogHour hour{2014, 3, 7, 9, 0, 0};

std::string described(std::int64_t time, unsigned milliseconds, unsigned level,
                      const std::string& text) {
    return std::to_string(time) + '.' + std::to_string(milliseconds) + " <" +
           std::to_string(level) + "> " + text + '\n';
}

/// The rows of the index, each from its bytes, and how many lines are left out.
std::string described(const LogIndex& index, std::string_view text) {
    std::string all;
    for (std::size_t row = 0; row < index.size(); ++row) {
        const std::uint64_t start = index[row].start();
        const LogRecord record =
            readRecord(text.substr(start, index.endOf(row) - start), index.hourOf(row));
        EXPECT_EQ(index[row].level(), record.level);
        EXPECT_EQ(index[row].lines(), std::ranges::count(record.text, '\n') + 1);
        all += described(record.time, record.milliseconds, record.level, record.text);
    }
    return all + std::to_string(index.droppedLines());
}

std::string parsed(std::string_view text) {
    LogParser parser;
    LogPiece piece;
    parser.parse(text, piece);
    LogIndex index;
    index.append(piece);
    return described(index, text);
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        if (!platform::takeUtf8(text).code)
            return false;
    }
    return true;
}

/// The plain way: the whole text at once, line by line, by the C library's functions.
std::string plain(std::string_view text) {
    constexpr std::string_view letters = "CEW-U-----V----DT"; // by their levels
    std::string all;
    std::optional<std::int64_t> base;
    int dropped = 0;
    for (std::size_t end = 0; (end = text.find('\n')) != std::string_view::npos;
         text.remove_prefix(end + 1)) {
        const std::string line(text.substr(0, end));
        unsigned n[6];
        int offset = 0;
        if (!isUtf8(line)) {
            ++dropped;
        } else if (line.starts_with(':')) {
            if (!base)
                break;
            if (std::sscanf(line.c_str(), ":%u:%u.%u", &n[0], &n[1], &n[2]) != 3)
                continue;
            const bool hasTag = line.size() >= 15 && line[12] == '[' && line[14] == ']';
            const std::size_t tag = hasTag && line[13] != '-' ? letters.find(line[13]) : 3;
            const std::size_t start = std::min<std::size_t>(hasTag ? 16 : 12, line.size());
            all += described(*base + std::int64_t{n[0]} * 60 + n[1], n[2],
                             static_cast<unsigned>(tag < letters.size() ? tag : 3),
                             line.substr(start));
        } else if (std::sscanf(line.c_str(), "%u-%u-%u %u:%u:%u %d", &n[0], &n[1], &n[2], &n[3],
                               &n[4], &n[5], &offset) == 7) {
            base = LogHour{n[0], n[1], n[2], n[3], n[4], n[5]}.base();
        } else if (all.empty()) {
            break;
        } else {
            all.insert(all.size() - 1, '\n' + line);
        }
    }
    return all + std::to_string(dropped);
}

/// Of parts that together are lines of all kinds, whole and broken.
std::string randomText(std::mt19937& random) {
    std::istringstream parts(
        ":05:07.3  : [W] |:41:05.312: |2014-03-07 09:00:00 +100|2014-11-02 23:|"
        "\n|\n|\n\n|text|[E]|:| |-7|\xC3\xA9|\xC3|\xED\xA0\x80|00:00 -30|"
        "\xF0\x9F\x98\x80|99999999999999999999|\t+5.|:59:60.999: [D]");
    std::vector<std::string> all{std::string(1, '\0')};
    for (std::string part; std::getline(parts, part, '|');)
        all.push_back(part);
    std::string text = random() % 8 > 0 ? date : "";
    text += random() % 4 > 0 ? ":00:00.1  : [I] first\n" : "";
    for (auto count = random() % 60; count > 0; --count)
        text += all[random() % all.size()];
    return text;
}

} // namespace

TEST(LogParser, TellsTimeLevelAndTextOfEachLine) {
    constexpr std::int64_t base = 61'355'005'200; // nine o'clock, whatever the zone
    EXPECT_EQ(hour.base(), base);
    const std::tuple<const char*, unsigned, unsigned, const char*> cases[] = {
        {":05:07.3  : [W] careful", 3, 2, "careful"},
        {":05:07.312: [C] c", 312, 0, "c"},
        {":05:07.312: [E] e", 312, 1, "e"},
        {":05:07.312: [U] u", 312, 4, "u"},
        {":05:07.312: [V] v", 312, 10, "v"},
        {":05:07.312: [D] d", 312, 15, "d"},
        {":05:07.312: [T] t", 312, 16, "t"},
        {":05:07.312: [X] x", 312, 3, "x"},
        {":05:07.312: [I]", 312, 3, ""},
        {":05:07.312: ab", 312, 3, "ab"},
        {":05:07.312: **** Tonvale ****", 312, 3, "**** Tonvale ****"},
        {":05:07.31", 31, 3, ""},
    };
    for (const auto& [line, milliseconds, level, text] : cases)
        EXPECT_EQ(parsed(date + line + '\n'),
                  described(base + 307, milliseconds, level, text) + '0')
            << line;
}

TEST(LogParser, StopsBeforeADateLineOrAMessageOnly) {
    const std::string message = ":05:07.312: a\n";
    const std::string noLogs[] = {"**** banner ****\n" + date + message, message + date + message,
                                  date + "more\n" + message, date + ":x\n"};
    for (const std::string& text : noLogs)
        EXPECT_EQ(parsed(text), "0") << text;
    const std::string log =
        date + ":x\n" + message + "b\n\n:y\nc\n" + date + message + "unfinished";
    EXPECT_TRUE(
        parsed(log).ends_with("> a\nb\n\nc\n" + described(hour.base() + 307, 312, 3, "a") + '0'));
}

/// However the text is cut, each state on the way is what the whole text so far gives.
TEST(LogParser, FindsInPartsWhatThePlainWayFindsInTheWhole) {
    for (unsigned seed = 0; seed < 4000; ++seed) {
        std::mt19937 random(seed);
        const std::string text = randomText(random);
        LogParser parser;
        LogIndex index;
        for (std::size_t place = 0; place < text.size();) {
            const std::size_t size = std::min<std::size_t>(1 + random() % 40, text.size() - place);
            LogPiece piece;
            parser.parse(std::string_view(text).substr(place, size), piece);
            index.append(piece);
            place += size;
            const std::string_view soFar = std::string_view(text).substr(0, place);
            ASSERT_EQ(described(index, soFar), plain(soFar)) << seed;
        }
    }
}

TEST(LogParser, CutsAMessageBetweenCharacters) {
    const std::string message = ":05:07.312: \xC3\xA9\xE2\x82\xAC\n";
    for (std::size_t size = 12; size <= message.size(); ++size)
        EXPECT_EQ(readRecord(message.substr(0, size), hour).text,
                  message.substr(12, size < 14   ? 0U
                                     : size < 17 ? 2U
                                                 : 5U))
            << size;
    EXPECT_EQ(readRecord("overwritten\n" + message, hour).text, "");
}
