#include "LogFixture.h"

#include "support/SystemLogRecorder.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
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
        file.write("the line\n");
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

TEST_F(LogTest, AMessageThatIsTooLongForMemoryIsCounted) {
    const support::SystemLogRecorder systemLog;
    qnlog_handle log(LogFile(LogFile::open(path("file")), &::write),
                     {.path = path("file"), .bound = 65536});
    qnlog_msg(&log, 3, "%s", std::string(100'000, 'x').c_str());
    EXPECT_TRUE(support::waitUntil([&] { return systemLog.contains("1 messages are missing"); }));
}

// A FIFO whose reader does not read is a disk that hangs.
TEST_F(LogTest, MemoryStaysBoundedWhileTheDiskHangsAndTheLostLinesAreCounted) {
    ASSERT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
    const FileDescriptor reader(::open(path("fifo").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    const support::SystemLogRecorder systemLog;
    constexpr std::size_t lines = 20'000;
    constexpr std::size_t bound = std::size_t{4} * 65536;
    std::string content;
    std::thread reading;
    {
        qnlog_handle log(LogFile(LogFile::open(path("fifo")), &::write),
                         {.path = path("fifo"), .bound = bound});
        for (std::size_t i = 0; i < lines; ++i)
            qnlog_msg(&log, 3, "line %zu of a burst that is too long for the FIFO", i);
        ASSERT_EQ(::fcntl(reader.get(), F_SETFL, 0), 0);
        reading = std::thread([&] {
            char buffer[4096];
            for (ssize_t got = 0; (got = ::read(reader.get(), buffer, sizeof buffer)) > 0;)
                content.append(buffer, static_cast<std::size_t>(got));
        });
    }
    reading.join();
    const auto written = static_cast<std::size_t>(std::count(content.begin(), content.end(), '\n'));
    std::size_t missing = 0;
    for (const auto& line : systemLog.lines())
        missing += std::stoul(line.text);
    EXPECT_GT(missing, 0U);
    EXPECT_EQ(written + missing, lines + 1); // and the date line
    EXPECT_LT(content.size(), bound + std::size_t{2} * 65536);
}
