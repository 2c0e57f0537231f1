#include "framework/logviewer/LogParser.h"

#include "framework/logviewer/LogIndex.h"

#include "PlainLogParser.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

using namespace QN::logviewer;

namespace {

const std::string date = "2014-03-07 09:00:00 +100\n";

/// By the index, from the bytes of each row.
plain::Records recordsOf(const LogIndex& index, std::string_view text) {
    plain::Records records;
    for (std::size_t row = 0; row < index.size(); ++row) {
        const std::uint64_t start = index[row].start();
        records.push_back(
            readRecord(text.substr(start, index.endOf(row) - start), index.hourOf(row)));
        EXPECT_EQ(records.back().level, index[row].level());
        const auto lines = std::ranges::count(records.back().text, '\n') + 1;
        EXPECT_EQ(index[row].lines(), static_cast<std::uint32_t>(lines));
    }
    return records;
}

plain::Records parse(std::string_view text) {
    LogParser parser;
    LogPiece piece;
    parser.parse(text, piece);
    LogIndex index;
    index.append(piece);
    return recordsOf(index, text);
}

std::string described(const plain::Records& records) {
    std::string text;
    for (const LogRecord& record : records)
        text += std::to_string(record.time) + '.' + std::to_string(record.milliseconds) + " <" +
                std::to_string(record.level) + "> " + record.text + '\n';
    return text;
}

class RandomText {
  public:
    explicit RandomText(unsigned seed) : random_(seed) {}

    std::size_t number(std::size_t count) { return random_() % count; }

    /// Of parts that together are lines of all kinds, whole and broken.
    std::string text() {
        static constexpr std::string_view parts[] = {":05:07.3  : [W] ",
                                                     ":41:05.312: ",
                                                     "2014-03-07 09:00:00 +100",
                                                     "2014-11-02 23:",
                                                     "\n",
                                                     "\n",
                                                     "\n\n",
                                                     "text",
                                                     "[E]",
                                                     ":",
                                                     " ",
                                                     "-7",
                                                     "\xC3\xA9",
                                                     "\xC3",
                                                     "\xED\xA0\x80",
                                                     "\xF0\x9F\x98\x80",
                                                     "00:00 -30",
                                                     "99999999999999999999",
                                                     "\t+5.",
                                                     ":59:60.999: [D]"};
        std::string text = number(8) > 0 ? date : "";
        if (number(4) > 0)
            text += ":00:00.1  : [I] first\n";
        for (std::size_t count = number(60); count > 0; --count)
            text += number(30) == 0 ? std::string(1, '\0')
                                    : std::string(parts[number(std::size(parts))]);
        return text;
    }

  private:
    std::mt19937 random_;
};

} // namespace

TEST(LogParser, TellsTimeLevelAndTextOfEachLine) {
    struct Case {
        const char* line;
        const char* expected;
    };
    const std::int64_t base = LogHour{2014, 3, 7, 9, 0, 0}.base();
    const auto at = [&](int minute, int second) {
        return std::to_string(base + minute * 60 + second);
    };
    const Case cases[] = {
        {":05:07.3  : [W] careful", ".3 <2> careful"},
        {":05:07.312: [C] c", ".312 <0> c"},
        {":05:07.312: [E] e", ".312 <1> e"},
        {":05:07.312: [U] u", ".312 <4> u"},
        {":05:07.312: [V] v", ".312 <10> v"},
        {":05:07.312: [D] d", ".312 <15> d"},
        {":05:07.312: [T] t", ".312 <16> t"},
        {":05:07.312: [X] x", ".312 <3> x"},
        {":05:07.312: [I]", ".312 <3> "},
        {":05:07.312: ab", ".312 <3> ab"},
        {":05:07.312: **** Tonvale ****", ".312 <3> **** Tonvale ****"},
        {":05:07.31", ".31 <3> "},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.line);
        EXPECT_EQ(described(parse(date + each.line + '\n')), at(5, 7) + each.expected + '\n');
    }
    EXPECT_EQ(base % 86400, 9 * 3600) << "the hour is that of the file, whatever the zone";
}

TEST(LogParser, StopsBeforeADateLineOrAMessageOnly) {
    const std::string message = ":05:07.312: a\n";
    EXPECT_TRUE(parse("**** banner ****\n" + date + message).empty());
    EXPECT_TRUE(parse(message + date + message).empty());
    EXPECT_TRUE(parse(date + "more\n" + message).empty());
    EXPECT_TRUE(parse(date + ":x\n").empty());
    EXPECT_EQ(parse(date + ":x\n" + message + ":y\nmore\n\n" + date + message).size(), 2U);
    EXPECT_EQ(parse(date + message + "b\n\nc\n:y\nd\n")[0].text, "a\nb\n\nc\nd");
    EXPECT_EQ(parse(date + message + "unfinished")[0].text, "a");
}

/// However the text is cut, each state on the way is what the whole text so far gives.
TEST(LogParser, FindsInPartsWhatThePlainWayFindsInTheWhole) {
    for (unsigned seed = 0; seed < 4000; ++seed) {
        RandomText random(seed);
        const std::string text = random.text();
        LogParser parser;
        LogIndex index;
        for (std::size_t place = 0; place < text.size();) {
            const std::size_t size = std::min(1 + random.number(40), text.size() - place);
            LogPiece piece;
            parser.parse(std::string_view(text).substr(place, size), piece);
            index.append(piece);
            place += size;
            const std::string_view soFar = std::string_view(text).substr(0, place);
            std::uint64_t dropped = 0;
            const plain::Records expected = plain::parse(soFar, dropped);
            ASSERT_EQ(described(recordsOf(index, soFar)), described(expected)) << seed;
            ASSERT_EQ(index.droppedLines(), dropped) << seed;
        }
    }
}

TEST(LogParser, CutsAMessageBetweenCharacters) {
    const std::string message = ":05:07.312: \xC3\xA9\xE2\x82\xAC\n";
    const LogHour hour{2014, 3, 7, 9, 0, 0};
    for (std::size_t size = 12; size <= message.size(); ++size) {
        const std::string text = readRecord(message.substr(0, size), hour).text;
        EXPECT_EQ(text, size < 14 ? "" : size < 17 ? "\xC3\xA9" : "\xC3\xA9\xE2\x82\xAC") << size;
    }
    EXPECT_EQ(readRecord("overwritten\n:05:07.312: a\n", hour).text, "");
}
