#include "platform/base/SystemLog.h"

#include "platform/base/FileDescriptor.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

TEST(SystemLog, ALineGoesToStandardErrorUnlessTheJournalIsThere) {
    const platform::FileDescriptor file(::memfd_create("errors", MFD_CLOEXEC));
    struct stat status {};
    ASSERT_EQ(::fstat(file.get(), &status), 0);
    const std::string journal = std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
    const platform::FileDescriptor errors(::dup(STDERR_FILENO));
    ASSERT_GE(::dup2(file.get(), STDERR_FILENO), 0);
    for (const std::optional<std::string>& stream :
         {std::optional<std::string>(), std::optional(journal), std::optional(journal + "0")}) {
        const support::ScopedVariable variable("JOURNAL_STREAM", stream);
        platform::systemLog(platform::LogPriority::info, "to%s\n", stream ? "some" : "none");
    }
    ASSERT_GE(::dup2(errors.get(), STDERR_FILENO), 0);
    std::string written(1000, '\0');
    const ssize_t size = ::pread(file.get(), written.data(), written.size(), 0);
    written.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    const std::string name = program_invocation_short_name;
    EXPECT_EQ(written, name + ": tonone?\n" + name + ": tosome?\n");
}
