#include "framework/logviewer/LogReader.h"

#include "framework/logviewer/LogIndex.h"
#include "framework/logviewer/LogParser.h"
#include "framework/logviewer/LogRecord.h"
#include "framework/logviewer/LogTail.h"
#include "platform/loop/MainQueue.h"
#include "support/WaitUntil.h"

#include "LogFileFixture.h"

#include <gtest/gtest.h>

#include <optional>

using namespace QN::logviewer;
namespace fs = std::filesystem;

namespace {

const std::string date(LogFileFixture::date);

/// Takes what a reader finds.
class Reading {
  public:
    explicit Reading(const std::string& path)
        : reader_(LogReader::start(path, [this](auto deliveries) { take(deliveries); })) {}

    bool waitFor(const std::function<bool()>& condition) const {
        return support::waitUntil([&] {
            platform::drainMainQueue();
            return condition();
        });
    }
    bool waitForRows(std::size_t count) const {
        return waitFor([&] { return isCaughtUp && index.size() == count; });
    }

    std::string text(std::size_t row) const {
        const std::uint64_t start = index[row].start();
        const auto size = static_cast<std::size_t>(index.endOf(row) - start);
        return readRecord(reader_->file()->text(start, size), index.hourOf(row)).text;
    }

    LogIndex index;
    std::optional<LogPiece> tail;
    bool isCaughtUp = false;
    int cuts = 0;
    LogFileState state = LogFileState::present;

  private:
    void take(const std::vector<LogDelivery>& deliveries) {
        for (const LogDelivery& each : deliveries) {
            state = each.state;
            isCaughtUp = isCaughtUp || each.isCaughtUp;
            if (each.kind == LogDelivery::Kind::tail)
                tail = each.piece;
            else if (each.kind == LogDelivery::Kind::part)
                index.append(each.piece);
            else
                index = {};
            cuts += each.kind == LogDelivery::Kind::cut ? 1 : 0;
        }
    }

    const std::unique_ptr<LogReader> reader_;
};

/// What has been found at the end is what is found there on the way from the beginning.
void expectTail(const LogPiece& found, const LogIndex& all, std::size_t leastRows) {
    LogIndex tail;
    tail.append(found);
    ASSERT_GE(tail.size(), leastRows);
    const std::size_t before = all.size() - tail.size();
    for (std::size_t row = 0; row < tail.size(); ++row) {
        ASSERT_EQ(tail[row].start(), all[before + row].start()) << row;
        ASSERT_EQ(tail[row].level(), all[before + row].level()) << row;
        ASSERT_EQ(tail[row].lines(), all[before + row].lines()) << row;
        ASSERT_EQ(tail.hourOf(row), all.hourOf(before + row)) << row;
    }
    EXPECT_EQ(tail.end(), all.end());
}

} // namespace

TEST(LogReader, ReadsWhatIsThereAndWhatIsAdded) {
    const LogFileFixture log("\xEF\xBB\xBF" + date + ":00:01.1  : [I] a\nb\n:00:02.2  : unfin");
    const Reading reading(log.path());
    ASSERT_TRUE(reading.waitForRows(1)) << "an unfinished line is none";
    EXPECT_EQ(reading.text(0), "a\nb");
    log.append("ished\nmore\n\xC3\n");
    ASSERT_TRUE(reading.waitForRows(2));
    ASSERT_TRUE(reading.waitFor([&] { return reading.index.droppedLines() == 1; }));
    EXPECT_EQ(reading.text(1), "unfinished\nmore");
    log.append("further\n");
    ASSERT_TRUE(reading.waitFor([&] { return reading.index[1].lines() == 3; }));
    EXPECT_EQ(reading.text(1), "unfinished\nmore\nfurther");
    EXPECT_EQ(reading.state, LogFileState::present);
}

TEST(LogReader, StartsWithAnEmptyFileAndStopsAtOneThatIsNoLog) {
    const LogFileFixture empty("\xEF\xBB");
    const Reading growing(empty.path());
    ASSERT_TRUE(growing.waitForRows(0));
    empty.append("\xBF");
    empty.append(date + ":00:01.1  : [I] a\n");
    EXPECT_TRUE(growing.waitForRows(1));
    const LogFileFixture other("#!/bin/sh\n" + date + ":00:01.1  : [I] a\n");
    const Reading stopped(other.path());
    ASSERT_TRUE(stopped.waitForRows(0));
    EXPECT_TRUE(stopped.index.hasStopped());
    EXPECT_EQ(LogReader::start(other.path("missing"), {}), nullptr);
    EXPECT_EQ(LogReader::start(fs::path(other.path()).parent_path(), {}), nullptr);
}

/// The file that is open goes on being shown.
TEST(LogReader, TellsWhatHappensToItsFile) {
    const LogFileFixture log(LogFileFixture::messages(0, 3));
    const Reading reading(log.path());
    ASSERT_TRUE(reading.waitForRows(3));
    fs::rename(log.path(), log.path("Tonvale0.log"));
    ASSERT_TRUE(reading.waitFor([&] { return reading.state == LogFileState::moved; }));
    log.append("another file\n");
    std::ofstream(log.path("Tonvale0.log"), std::ios::app) << LogFileFixture::messages(3, 1);
    ASSERT_TRUE(reading.waitForRows(4));
    EXPECT_EQ(reading.state, LogFileState::moved) << "the path is that of another file";
    fs::remove(log.path("Tonvale0.log"));
    ASSERT_TRUE(reading.waitFor([&] { return reading.state == LogFileState::deleted; }));
    EXPECT_EQ(reading.text(3), "message 3");
    EXPECT_EQ(reading.cuts, 0);
}

TEST(LogReader, BeginsAnewWhenTheFileIsCutOrOverwritten) {
    const LogFileFixture log(LogFileFixture::messages(0, 100));
    const Reading reading(log.path());
    ASSERT_TRUE(reading.waitForRows(100));
    const auto size = fs::file_size(log.path());
    fs::resize_file(log.path(), 0);
    ASSERT_TRUE(reading.waitForRows(0));
    // As the program writes on that has the file open: the hole is no part of the line.
    fs::resize_file(log.path(), size);
    log.append(":05:00.1  : [I] after the hole\n");
    ASSERT_TRUE(reading.waitForRows(1));
    EXPECT_EQ(reading.text(0), "after the hole");
    EXPECT_EQ(reading.index.hourOf(0).hour, 0U) << "the hour is known from before";
    std::ofstream(log.path(), std::ios::trunc)
        << date << LogFileFixture::messages(0, 200, "longer");
    ASSERT_TRUE(reading.waitForRows(200));
    EXPECT_EQ(reading.text(199), "longer 199");
    EXPECT_GE(reading.cuts, 2);
}

TEST(LogReader, ShowsTheTailOfALongFileFirst) {
    constexpr int count = 150'000;
    const LogFileFixture log(LogFileFixture::messages(0, count, "a message of a usual length"));
    const Reading reading(log.path());
    ASSERT_TRUE(reading.waitForRows(count));
    ASSERT_TRUE(reading.tail) << "a file of " << fs::file_size(log.path());
    expectTail(*reading.tail, reading.index, 1001);
}

/// The hour may be far before, and the line before the first message of the tail very long.
TEST(LogReader, FindsTheTailAndItsHourWhereverTheyAre) {
    const std::string head = date + ":00:01.1  : [I] first\n";
    const std::string many = LogFileFixture::messages(0, 20'000).substr(date.size());
    for (const std::string& text :
         {head + many, head + many + std::string(300'000, 'y') + '\n',
          std::string(head).append(900'000, 'x').append("\n:00:02.1  : [E] b\n"),
          std::string(head).append(many).append(date).append(":00:02.1  : [E] b\n")}) {
        SCOPED_TRACE(text.substr(text.size() - 20));
        const LogFileFixture log(text);
        LogParser parser;
        LogPiece piece;
        parser.parse(text, piece);
        LogIndex all;
        all.append(piece);
        const auto tail = readTail(*LogBytes::open(log.path()), head.size(), text.size());
        ASSERT_TRUE(tail);
        expectTail(*tail, all, 1);
    }
}
