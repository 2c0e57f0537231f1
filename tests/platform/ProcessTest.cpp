#include "platform/files/Bundle.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/TerminationSignals.h"
#include "platform/processes/ProcessInfo.h"
#include "platform/processes/ProcessNumbers.h"
#include "support/ChildProcess.h"
#include "support/PrivateFolder.h"
#include "support/SystemLogRecorder.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

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

TEST(ProcessNumbers, AreThoseThatAProcessHasForItself) {
    platform::ProcessNumbers numbers;
    support::ChildProcess plain({"sleep", "60"});
    for (int i = 0; i < 2; ++i) {
        EXPECT_THAT(numbers.find(plain.pid()), testing::ElementsAre(plain.pid()));
        EXPECT_THAT(numbers.find(::getpid()), testing::ElementsAre(::getpid()));
    }
    plain.stop(SIGKILL);
    EXPECT_THAT(numbers.find(plain.pid()), testing::IsEmpty());

    support::ChildProcess outer(
        {"unshare", "--user", "--pid", "--fork", "--kill-child", "sleep", "60"});
    std::ifstream file;
    pid_t inner = 0;
    if (!support::waitUntil([&] {
            const std::string folder = "/proc/" + std::to_string(outer.pid());
            file = std::ifstream(folder + "/task/" + std::to_string(outer.pid()) + "/children");
            return static_cast<bool>(file >> inner) || !outer.isRunning();
        }) ||
        !outer.isRunning())
        GTEST_SKIP() << "the system lets nobody make namespaces";
    EXPECT_THAT(numbers.find(1), testing::Contains(inner));
    EXPECT_THAT(numbers.find(inner), testing::IsEmpty());
    outer.stop(SIGKILL);
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

TEST(TerminationSignals, ReachTheRunLoop) {
    platform::RunLoop loop;
    std::vector<int> received;
    const platform::TerminationSignals signals(loop,
                                               [&](int number) { received.push_back(number); });
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        ASSERT_EQ(::raise(number), 0);
        loop.turn();
    }
    EXPECT_EQ(received, (std::vector{SIGTERM, SIGINT, SIGHUP}));
}

TEST(Bundle, ReadsItsInformationAndSurvivesADamagedOrMissingFile) {
    const support::PrivateFolder folder;
    const support::SystemLogRecorder log;
    std::ofstream(folder.path() / "Info.plist")
        << R"(<?xml version="1.0"?><plist version="1.0"><dict><key>CFBundleName</key>)"
        << R"(<string>Tönvale</string><key>CFBundleShortVersionString</key><integer>7</integer>)"
        << "</dict></plist>";
    const platform::Bundle bundle(folder.path());
    EXPECT_EQ(bundle.name(), "Tönvale");
    EXPECT_EQ(bundle.version(), "") << "a value of the wrong type counts as missing";
    EXPECT_EQ(bundle.plugIns(), folder.path() / "PlugIns");

    for (const char* const content : {"", "no property list", "<plist><array/></plist>"}) {
        std::ofstream(folder.path() / "Info.plist") << content;
        EXPECT_EQ(platform::Bundle(folder.path()).name(), "");
    }
    std::filesystem::create_directories(folder.path() / "strange" / "Info.plist");
    for (const char* const missing : {"absent", "strange"})
        EXPECT_EQ(platform::Bundle(folder.path() / missing).identifier(), "");
    EXPECT_EQ(log.count("Couldn't read the bundle's information"), 5U);
}
