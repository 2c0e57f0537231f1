#include "LogFixture.h"

#include "support/ChildProcess.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>

namespace {

int child(const std::string& what, const std::string& path,
          const support::ChildProcess::Options& options = {}) {
    support::ChildProcess process({TONVALE_LOG_CHILD, what, path}, options);
    return process.wait(std::chrono::minutes(1)).value_or(-1);
}

} // namespace

// A FIFO that nobody reads is a disk that hangs.
TEST_F(LogTest, NoKindOfProgramEndIsBlockedByABusyPoolOrAHangingDisk) {
    ASSERT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
    const platform::FileDescriptor reader(
        ::open(path("fifo").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    for (const char* const road : {"exit", "return", "exit of a thread"}) {
        EXPECT_EQ(child(road, path("fifo")), 0) << road;
        const std::string content = contentOf(path("fifo.good"));
        EXPECT_EQ(std::ranges::count(content, '\n'), 1004) << "with the date line";
        for (const char* const text :
             {"of the first static object\n", "at exit\n", "of the last static object\n"})
            EXPECT_NE(content.find(text), std::string::npos) << road << text;
        std::filesystem::remove(path("fifo.good"));
    }
}

TEST_F(LogTest, TheEndOfTheProgramWaitsForADiskThatIsSlowAndNoLonger) {
    ASSERT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
    const platform::FileDescriptor reader(
        ::open(path("fifo").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    support::ChildProcess process({TONVALE_LOG_CHILD, "slow end", path("fifo")});
    ASSERT_TRUE(
        support::waitUntil([&] { return process.output().find("ends") != std::string::npos; }));
    EXPECT_TRUE(process.isRunning());
    ASSERT_EQ(::fcntl(reader.get(), F_SETFL, 0), 0);
    const std::string content = readAll(reader.get());
    EXPECT_EQ(std::ranges::count(content, '\n'), 2 * 2001 + 1) << "with the date lines";
    EXPECT_NE(content.find("of the last static object\n"), std::string::npos);
    EXPECT_EQ(process.wait(), 0);
}

TEST_F(LogTest, AForkedChildLogsNothingAndEnds) {
    // What only the threads of the parent know of counts as a leak in the child.
    const char* const given = std::getenv("ASAN_OPTIONS");
    const std::string noLeaks = std::string(given ? given : "") + ":detect_leaks=0";
    EXPECT_EQ(child("fork", path("fork.log"), {.environment = {{"ASAN_OPTIONS", noLeaks}}}), 0);
    EXPECT_EQ(contentOf(path("fork.log")).find("child"), std::string::npos);
}

TEST_F(LogTest, AMessageWithoutMemoryIsLostAndTheNextOnesAreWritten) {
    EXPECT_EQ(child("no-memory", path("memory.log")), 0);
    const std::string content = contentOf(path("memory.log"));
    EXPECT_NE(content.find("before"), std::string::npos);
    EXPECT_EQ(content.find("xxx"), std::string::npos);
    EXPECT_NE(content.find("after"), std::string::npos);
}
