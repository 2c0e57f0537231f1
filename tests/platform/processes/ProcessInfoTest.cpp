#include "platform/processes/ProcessInfo.h"
#include "platform/loop/RunLoop.h"
#include "support/ChildProcess.h"
#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

TEST(ProcessInfo, SeesTheFilesOfAProcessButWaitsForNone) {
    const support::PrivateFolder folder;
    const auto seen = [&folder](const char* name) {
        return platform::fileSeenBy(::getpid(), folder.path() / name);
    };
    std::ofstream(folder.path() / "file") << "content";
    ASSERT_EQ(::mkfifo((folder.path() / "pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink("file", folder.path() / "link");
    EXPECT_EQ(seen("file"), "content");
    EXPECT_EQ(seen("pipe"), "");
    EXPECT_EQ(seen("link"), "");
    EXPECT_EQ(seen("absent"), "");
}

TEST(ProcessWatch, CallsOnceWhenTheProcessEndsAndMayBeDestroyedFromTheCall) {
    platform::RunLoop loop;
    support::ChildProcess child({"sleep", "60"});
    std::unique_ptr<platform::ProcessWatch> watch;
    int calls = 0;
    watch = platform::ProcessWatch::create(loop, child.pid(), [&] {
        ++calls;
        watch.reset();
        loop.stop();
    });
    ASSERT_NE(watch, nullptr);
    loop.turn();
    EXPECT_EQ(calls, 0);
    child.signal(SIGKILL);
    loop.run();
    EXPECT_EQ(calls, 1);
    child.stop();
    EXPECT_EQ(platform::ProcessWatch::create(loop, child.pid(), [] {}), nullptr);
    EXPECT_EQ(errno, ESRCH);
}
