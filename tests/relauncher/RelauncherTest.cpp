#include "relauncher/ProcessWait.h"

#include "platform/processes/IndependentProgram.h"
#include "platform/processes/ProcessInfo.h"
#include "support/ChildProcess.h"
#include "support/Files.h"
#include "support/ManualClock.h"
#include "support/PrivateFolder.h"
#include "support/SystemLogRecorder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using support::ChildProcess;

namespace {

std::string startTimeOf(pid_t process) {
    return std::to_string(platform::processStartTime(process).value_or(0));
}

} // namespace

TEST(Relauncher, StartsTheCopyWithItsArgumentsOnceTheProcessIsGone) {
    const support::PrivateFolder folder;
    const fs::path copy = folder.path() / "c o'p\"y $x";
    const fs::path report = folder.path() / "report";
    std::ofstream(copy)
        << "#!/bin/sh\n{ pwd; ls -l /proc/$$/fd | grep -c marker; echo $$;"
           "sed 's/.*) //' /proc/$$/stat | cut -d' ' -f4; printf '<%s>' \"$@\"; } >'"
        << report.string() << ".new'\nmv '" << report.string() << ".new' '" << report.string()
        << "'\n";
    std::ofstream(folder.path() / "marker") << "";
    const int inherited =
        ::open((folder.path() / "marker").c_str(), O_RDONLY); // NOLINT: as others may
    fs::permissions(copy, fs::perms::owner_all);
    ChildProcess waitedFor({"/bin/sleep", "600"});
    ASSERT_EQ(platform::startIndependently({TONVALE_RELAUNCHER, std::to_string(waitedFor.pid()),
                                            startTimeOf(waitedFor.pid()), copy, "-QNInstallVolume",
                                            "/a b/\"q\" 'r' $HOME ü"}),
              0);
    EXPECT_FALSE(support::waitUntil([&] { return fs::exists(report); }, 500ms));
    waitedFor.stop();
    ASSERT_TRUE(support::waitUntil([&] { return fs::exists(report); }));
    std::ifstream stream(report);
    std::string place;
    std::string arguments;
    int inheritedDescriptors = -1;
    pid_t process = 0;
    pid_t session = 0;
    stream >> place >> inheritedDescriptors >> process >> session >> std::ws;
    std::getline(stream, arguments);
    EXPECT_EQ(place, "/");
    EXPECT_EQ(inheritedDescriptors, 0);
    EXPECT_EQ(session, process) << "a session of its own";
    EXPECT_EQ(arguments, "<-QNInstallVolume></a b/\"q\" 'r' $HOME ü>");
    ::close(inherited);
}

TEST(Relauncher, DoesNotWaitForALaterProcessOfTheSameNumber) {
    ChildProcess other({"/bin/sleep", "600"});
    ChildProcess relauncher({TONVALE_RELAUNCHER, std::to_string(other.pid()), "1", "/bin/true"});
    EXPECT_EQ(relauncher.wait(), 0);
    for (const std::vector<std::string>& wrong :
         {std::vector<std::string>{"1", "2"}, {"x", "1", "/bin/true"}, {"-1", "1", "/bin/true"}}) {
        std::vector<std::string> arguments{TONVALE_RELAUNCHER};
        arguments.insert(arguments.end(), wrong.begin(), wrong.end());
        EXPECT_EQ(ChildProcess(arguments).wait(), 2) << wrong[0];
    }
}

TEST(Relauncher, SaysAfterAMinuteThatItStillWaits) {
    support::ManualClock clock;
    const support::SystemLogRecorder log;
    ChildProcess process({"/bin/sleep", "600"});
    std::thread waiting(
        [&] { waitForEndOf(process.pid(), *platform::processStartTime(process.pid())); });
    EXPECT_TRUE(support::waitUntil([&] {
        clock.advance(20s);
        return log.contains("doesn't end");
    }));
    clock.advance(1h);
    process.stop();
    waiting.join();
    EXPECT_EQ(log.lines().size(), 1U);
}
