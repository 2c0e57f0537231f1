#include "support/ChildProcess.h"
#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

support::CommandResult child(const std::string& what, const std::string& log = {}) {
    support::ChildProcess process({TONVALE_APPLICATION_CHILD, what, log},
                                  {.environment = {}, .keepErrors = false});
    const int status = process.wait().value_or(-1);
    return {status, process.output()};
}

} // namespace

TEST(ApplicationProcess, RunsItsHooksInOrderAndEndsOnceWithStatusZero) {
    constexpr const char* order = "will finish\n"
                                  "complete\n"
                                  "will terminate, posted\n"
                                  "will terminate\n";
    for (const char* const what : {"timer", "thread", "throw"}) {
        const auto result = child(what);
        EXPECT_EQ(result.status, 0) << what;
        EXPECT_EQ(result.output, order) << what;
    }
}

// A FIFO that nobody reads is a disk that hangs.
TEST(ApplicationProcess, EndsThoughTheDiskOfItsLogHangs) {
    const support::PrivateFolder folder;
    const std::string fifo = folder.path() / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const platform::FileDescriptor reader(::open(fifo.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    EXPECT_EQ(child("windows", fifo).status, 0);
}

TEST(ApplicationProcess, EndsWith22WithoutItsClass) {
    EXPECT_EQ(child("no-class").status, 22);
}
