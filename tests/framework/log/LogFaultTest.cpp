#include "LogFixture.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sstream>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using platform::FileDescriptor;
using QN::log::LogFile;

namespace {

/// What the next calls of write(2) answer: so many bytes taken, or an error (negative). Real calls
/// are made when the list is used up. Used by one log at a time.
std::vector<ssize_t> script;

ssize_t scriptedWrite(int descriptor, const void* bytes, std::size_t size) {
    if (script.empty())
        return ::write(descriptor, bytes, size);
    const ssize_t answer = script.front();
    script.erase(script.begin());
    if (answer < 0) {
        errno = static_cast<int>(-answer);
        return -1;
    }
    return ::write(descriptor, bytes, static_cast<std::size_t>(answer));
}

/// Writes of at most that many bytes find no room.
std::atomic<std::size_t> refusedSize{0};

ssize_t refusingWrite(int descriptor, const void* bytes, std::size_t size) {
    if (size > refusedSize)
        return ::write(descriptor, bytes, size);
    errno = ENOSPC;
    return -1;
}

} // namespace

TEST_F(LogTest, NoTornLineStaysInTheFile) {
    struct Case {
        std::vector<ssize_t> answers;
        const char* content;
    };
    const Case cases[] = {
        {{-EINTR}, "before\nthe line\nafter\n"}, {{4, 2}, "before\nthe line\nafter\n"},
        {{4, -EINTR, 0, 3}, "before\nafter\n"},  {{4, -ENOSPC}, "before\nafter\n"},
        {{8, -EIO}, "before\nafter\n"},          {{-ENOSPC}, "before\nafter\n"},
    };
    for (const Case& each : cases) {
        std::filesystem::remove(path("file"));
        LogFile file(LogFile::open(path("file")), &scriptedWrite);
        ASSERT_TRUE(file.write("before\n"));
        script = each.answers;
        (void)file.write("the line\n");
        script.clear();
        EXPECT_TRUE(file.write("after\n"));
        EXPECT_EQ(contentOf(path("file")), each.content);
    }
}

TEST_F(LogTest, ALostLineDoesNotTakeTheDateLineAlong) {
    const support::ScopedVariable zone("TZ", "UTC0");
    const ManualTimeOfDay time(std::chrono::sys_seconds{});
    script = {-ENOSPC};
    {
        qnlog_handle log(LogFile(LogFile::open(path("file")), &scriptedWrite),
                         {.path = path("file")});
        qnlog_msg(&log, 3, "lost");
        qnlog_msg(&log, 3, "written");
    }
    EXPECT_EQ(contentOf(path("file")), "1970-01-01 00:00:00 +000\n:00:00.0  : [I] written\n");
}

TEST_F(LogTest, OpensNothingWhereNoFileCanBe) {
    ASSERT_EQ(::mkfifo(path("nobody reads").c_str(), 0600), 0);
    std::filesystem::create_directory(path("folder"));
    for (const std::string& bad : {path("missing/file.log"), path("folder"), path("nobody reads"),
                                   std::string("/sys/tonvale.log"), std::string()})
        EXPECT_EQ(openLog(bad, QNLOG_BANNER | QNLOG_BOM), nullptr) << bad;
    EXPECT_EQ(openLog(path("missing/file.log"), QNLOG_ROTATE), nullptr);
    qnlog_close(nullptr);
}

TEST_F(LogTest, TheMarkComesFirstOrNotAtAll) {
    const support::ScopedVariable zone("TZ", "UTC0");
    const ManualTimeOfDay time(std::chrono::sys_seconds{});
    const std::string date = "1970-01-01 00:00:00 +000\n";
    const std::string first = ":00:00.0  : [I] first\n";
    const std::string second = ":00:00.0  : [I] second\n";
    const std::pair<std::size_t, std::string> cases[] = {{1000, "mark" + date + second},
                                                         {4, date + first + second}};
    for (const auto& [size, content] : cases) {
        std::filesystem::remove(path("file"));
        refusedSize = size;
        qnlog_handle log(LogFile(LogFile::open(path("file")), &refusingWrite),
                         {.path = path("file"), .beginning = "mark"});
        qnlog_msg(&log, 3, "first");
        log.flush();
        refusedSize = 0;
        qnlog_msg(&log, 3, "second");
        log.flush();
        EXPECT_EQ(contentOf(path("file")), content);
    }
}

TEST_F(LogTest, AMessageThatIsTooLongForMemoryLeavesAGapWhateverTheLevel) {
    const support::ScopedVariable zone("TZ", "UTC0");
    const ManualTimeOfDay time(std::chrono::sys_seconds(std::chrono::seconds(90)));
    {
        qnlog_handle log(LogFile(LogFile::open(path("file")), &::write),
                         {.path = path("file"), .bound = 65536});
        qnlog_setlevel(&log, qnlog_critical);
        qnlog_msg(&log, qnlog_critical, "%s", std::string(100'000, 'x').c_str());
    }
    EXPECT_EQ(contentOf(path("file")),
              "1970-01-01 00:00:00 +000\n"
              ":01:30.0  : [C] log level changed\n"
              ":01:30.0  : [W] Messages dropped here because too many were waiting: 1\n");
}

// A FIFO whose reader does not read is a disk that hangs.
TEST_F(LogTest, GapsInTheFileTellHowManyLinesWereDroppedThereAndLinesComeAgainAfterwards) {
    ASSERT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
    const FileDescriptor reader(::open(path("fifo").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    constexpr std::size_t bound = std::size_t{4} * 65536;
    std::string content;
    std::thread reading;
    std::size_t number = 0;
    {
        qnlog_handle log(LogFile(LogFile::open(path("fifo")), &::write),
                         {.path = path("fifo"), .bound = bound});
        const auto burst = [&](std::uint32_t level) {
            for (int i = 0; i < 20'000; ++i)
                qnlog_msg(&log, level, "line %zu", number++);
        };
        burst(qnlog_information);
        qnlog_setlevel(&log, qnlog_debug); // is longer than a line, so it finds no room either
        ++number;
        ASSERT_EQ(::fcntl(reader.get(), F_SETFL, 0), 0);
        reading = std::thread([&] { content = readAll(reader.get()); });
        log.flush();
        burst(qnlog_debug);
        log.flush();
        qnlog_msg(&log, qnlog_debug, "line %zu", number++);
    }
    reading.join();
    std::size_t next = 0;
    std::istringstream lines(content);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t gap = line.find("waiting: ");
        const std::size_t at = line.find("line ");
        if (gap != std::string::npos) {
            next += std::stoul(line.substr(gap + 8));
        } else if (at != std::string::npos) {
            ASSERT_EQ(std::stoul(line.substr(at + 5)), next++);
        } else if (line.find("log level changed") != std::string::npos) {
            ++next; // unless a line has been taken in between
        }
    }
    EXPECT_EQ(next, number);
    EXPECT_LT(content.find("waiting: "), bound + std::size_t{2} * 65536);
}
