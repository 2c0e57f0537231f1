#include "LogFixture.h"
#include "framework/log/LogPrefixes.h"

#include "support/ManualClock.h"

#include <cstdlib>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;
using support::ScopedVariable;

namespace {

constexpr std::string_view mark = "\xEF\xBB\xBF";

std::chrono::sys_seconds at(int year, unsigned month, unsigned day, std::chrono::seconds time) {
    using namespace std::chrono;
    return sys_days(std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day)) +
           time;
}

const auto morning = at(2014, 3, 7, 8h + 41min + 5s); // UTC

/// It is eight in the morning.
class TimedLogTest : public LogTest {
    const ScopedVariable zone_{"TZ", "UTC0"};
    const ManualTimeOfDay time_{morning};
};

void log(const Log& to, std::uint32_t level, const char* text) {
    qnlog_msg(to.get(), level, "%s", text);
}

} // namespace

TEST_F(LogTest, TheFileOfARunTellsDateLevelAndTextOfEachMessage) {
    const ScopedVariable zone("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    ManualTimeOfDay time(morning);
    {
        const Log file = openLog(path("Tonvale.log"), QNLOG_BOM);
        time.set(morning, 312'999);
        qnlog_msg(file.get(), qnlog_always, "%s version %d", "starts with", 7);
        time.set(morning + 1s, 7'000);
        for (const std::uint32_t level : {0U, 1U, 2U, 3U, 4U})
            log(file, level, "a text");
        log(file, qnlog_verbose, "is not written");
        log(file, 3, "two\nlines");
        log(file, 3, "ends with a line feed\n");
        log(file, 3, "");
        time.set(morning + 18min + 55s, 0);
        log(file, 3, "the next hour");
        time.set(morning + 24h, 0);
        log(file, 3, "the next day");
        time.set(morning + 24h * 22 + 16h + 18min + 54s, 0);
        log(file, 3, "before summer");
        time.set(morning + 24h * 22 + 16h + 18min + 55s, 0);
        log(file, 3, "summer");
    }
    EXPECT_EQ(contentOf(path("Tonvale.log")), std::string(mark) + R"(2014-03-07 09:00:00 +100
:41:05.312: starts with version 7
:41:06.7  : [C] a text
:41:06.7  : [E] a text
:41:06.7  : [W] a text
:41:06.7  : [I] a text
:41:06.7  : [U] a text
:41:06.7  : [I] two
lines
:41:06.7  : [I] ends with a line feed
2014-03-07 10:00:00 +100
:00:00.0  : [I] the next hour
2014-03-08 09:00:00 +100
:41:05.0  : [I] the next day
2014-03-30 01:00:00 +100
:59:59.0  : [I] before summer
2014-03-30 03:00:00 +200
:00:00.0  : [I] summer
)");
}

TEST_F(LogTest, AChangeOfZoneGivesADateLineAndAnotherYearNone) {
    ManualTimeOfDay time(morning);
    support::ManualClock clock;
    std::optional<ScopedVariable> zone;
    const Log file = openLog(path("zones.log"));
    for (const char* const name :
         {"AAA-1", "BBB5", "CCC-5:30", "DDD0:30", "EEE3:30", "UTC0", "UTC0"}) {
        drain(file);
        zone.reset();
        zone.emplace("TZ", name);
        clock.advance(1s);
        log(file, 3, name);
        drain(file);
    }
    time.set(at(2015, 3, 7, 8h + 41min + 5s), 0);
    log(file, 3, "a year later");
    drain(file);
    EXPECT_EQ(contentOf(path("zones.log")), R"(2014-03-07 09:00:00 +100
:41:05.0  : [I] AAA-1
2014-03-07 03:00:00 -500
:41:05.0  : [I] BBB5
2014-03-07 14:00:00 +530
:11:05.0  : [I] CCC-5:30
2014-03-07 08:00:00 +030
:11:05.0  : [I] DDD0:30
2014-03-07 05:00:00 -330
:11:05.0  : [I] EEE3:30
2014-03-07 08:00:00 +000
:41:05.0  : [I] UTC0
:41:05.0  : [I] UTC0
:41:05.0  : [I] a year later
)");
}

TEST_F(TimedLogTest, LevelsChangeInOrderWithTheMessages) {
    {
        const Log file = openLog(path("levels.log"));
        log(file, qnlog_debug, "not yet");
        qnlog_setlevel(file.get(), qnlog_debug);
        for (const std::uint32_t level : {5U, 9U, 10U, 11U, 14U, 15U, 16U, 17U, 0xFFFFFFFEU})
            log(file, level, "detail");
        drain(file);
        EXPECT_EQ(qnlog_getlevel(file.get()), qnlog_debug);
        qnlog_setlevel(file.get(), 17);
        qnlog_setlevel(file.get(), 16);
        log(file, 16, "most detail");
        qnlog_setlevel(file.get(), qnlog_critical);
        log(file, qnlog_error, "not any more");
        log(file, qnlog_always, "always");
        drain(file);
        EXPECT_EQ(qnlog_getlevel(file.get()), qnlog_critical);
    }
    EXPECT_EQ(contentOf(path("levels.log")), R"(2014-03-07 08:00:00 +000
:41:05.0  : [D] log level changed
:41:05.0  : detail
:41:05.0  : detail
:41:05.0  : [V] detail
:41:05.0  : detail
:41:05.0  : detail
:41:05.0  : [D] detail
:41:05.0  : log level changed
:41:05.0  : most detail
:41:05.0  : [C] log level changed
:41:05.0  : always
)");
}

TEST_F(TimedLogTest, AnOldFileIsContinuedAndTheFirstMessageHasADateLineAllTheSame) {
    for (const char* const text : {"first run", "second run"})
        log(openLog(path("continued.log"), QNLOG_BOM), 3, text);
    EXPECT_EQ(contentOf(path("continued.log")), std::string(mark) + "2014-03-07 08:00:00 +000\n"
                                                                    ":41:05.0  : [I] first run\n"
                                                                    "2014-03-07 08:00:00 +000\n"
                                                                    ":41:05.0  : [I] second run\n");
}

TEST_F(TimedLogTest, ALineThatWasCutOffEndsBeforeTheFirstMessage) {
    const std::string line = "2014-03-07 08:00:00 +000\n:41:05.0  : [I] on\n";
    const std::pair<std::string, std::string> cases[] = {
        {"", line}, {"whole\n", "whole\n" + line}, {"cut", "cut\n" + line}};
    for (const std::uint32_t flags : {0U, std::uint32_t{QNLOG_BOM}}) {
        for (const auto& [before, after] : cases) {
            makeFile("old.log", before);
            log(openLog(path("old.log"), flags), 3, "on");
            EXPECT_EQ(contentOf(path("old.log")), after);
        }
    }
}

TEST_F(TimedLogTest, AnErrorIsWrittenAtOnceThoughTheWriterLingers) {
    qnlog_handle log(QN::log::LogFile(QN::log::LogFile::open(path("file")), &::write),
                     {.path = path("file"), .lingering = 1h});
    for (const std::uint32_t level : {qnlog_error, qnlog_critical, qnlog_error, qnlog_error}) {
        log.flush();
        const std::string before = contentOf(path("file"));
        qnlog_msg(&log, level, "an error");
        EXPECT_TRUE(support::waitUntil([&] { return contentOf(path("file")) > before; }));
    }
}

TEST_F(LogTest, AFileThatRootOpensForAnotherUserBelongsToThatUser) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs root";
    constexpr uid_t user = 12345;
    constexpr gid_t group = 23456;
    ASSERT_EQ(::setresgid(group, 0, 0), 0);
    ASSERT_EQ(::setresuid(user, 0, 0), 0);
    const Log opened = openLog(path("theirs.log"));
    EXPECT_EQ(::setresuid(0, 0, 0), 0);
    EXPECT_EQ(::setresgid(0, 0, 0), 0);
    struct stat file {};
    ASSERT_EQ(::stat(path("theirs.log").c_str(), &file), 0);
    EXPECT_EQ(file.st_uid, user);
    EXPECT_EQ(file.st_gid, group);
}

TEST_F(TimedLogTest, NoTextDisturbsALineOrATerminal) {
    const std::string big(100'000, 'x'); // more than a chunk
    {
        const Log file = openLog(path("hostile.log"));
        log(file, 3, "\x1B[2Jgone\r\a\x7F");
        log(file, 3, "tab\tand \u00FCml\u00E4ut \u20AC \U0001F50A");
        log(file, 3,
            "C1 \xC2\x9B"
            "31m overlong \xC0\xAF surrogate \xED\xA0\x80 beyond \xF4\x90\x80\x80 cut "
            "\xE2\x82");
        log(file, 3, "100 %s%n");
        const char* volatile absent = nullptr; // unseen by the check of formats
        log(file, 3, absent);
        qnlog_msg(file.get(), 3, "%s and %s", "long", big.c_str());
    }
    EXPECT_EQ(contentOf(path("hostile.log")),
              "2014-03-07 08:00:00 +000\n"
              ":41:05.0  : [I] ?[2Jgone???\n"
              ":41:05.0  : [I] tab\tand \u00FCml\u00E4ut \u20AC \U0001F50A\n"
              ":41:05.0  : [I] C1 ??31m overlong ?? surrogate ??? beyond ???? cut ??\n"
              ":41:05.0  : [I] 100 %s%n\n"
              ":41:05.0  : [I] (null)\n"
              ":41:05.0  : [I] long and " +
                  big + "\n");
}

TEST_F(TimedLogTest, AThreadsPrefixesStandBeforeItsMessagesUntilItCloses) {
    namespace prefixes = QN::log::prefixes;
    std::uint64_t number = 0;
    {
        const Log file = openLog(path("prefixes.log"));
        number = file->number();
        prefixes::append(number, "import");
        prefixes::append(number, "(2)");
        log(file, 3, "begins");
        std::thread([&] { log(file, 3, "elsewhere"); }).join();
        log(file, 3, "");
    }
    EXPECT_FALSE(prefixes::areThere(number));
    EXPECT_EQ(contentOf(path("prefixes.log")), "2014-03-07 08:00:00 +000\n"
                                               ":41:05.0  : [I] import (2) begins\n"
                                               ":41:05.0  : [I] elsewhere\n");
}

// Closing writes the waiting messages itself: all threads of the pool may be busy, for example with
// closing.
TEST_F(LogTest, TasksOfThePoolCloseLogs) {
    constexpr int tasks = 16;
    std::atomic<int> closed = 0;
    QN::async::queue pool("", false, -254);
    for (int i = 0; i < tasks; ++i) {
        pool.enqueue([&, i] {
            log(openLog(path(std::to_string(i)), QNLOG_BOM), 3, "from the pool");
            ++closed;
        });
    }
    pool.wait();
    EXPECT_EQ(closed, tasks);
    for (int i = 0; i < tasks; ++i)
        EXPECT_NE(contentOf(path(std::to_string(i))).find("from the pool\n"), std::string::npos);
}
