#include "framework/crash/CrashFinisher.h"

#include "platform/crash/Sanitizers.h"
#include "support/ChildProcess.h"
#include "support/Files.h"
#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

constexpr int bySignal = 128;

class CrashDeathTest : public testing::Test {
  protected:
    void SetUp() override {
        if (platform::isSanitized)
            GTEST_SKIP() << "the sanitizer handles crashes";
    }

    /// How a program dies that handles crashes in this folder; "-" for one that does not.
    static int die(const std::string& where, const std::string& manner,
                   const std::vector<std::string>& more = {}) {
        std::vector<std::string> arguments{TONVALE_DYING_PROGRAM, where, manner};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return support::runCommand(arguments).status;
    }

    int die(const std::string& manner) const { return die(folder.path(), manner); }

    std::vector<std::filesystem::path> files(const std::string& ending) const {
        std::vector<std::filesystem::path> found;
        for (const auto& file : std::filesystem::directory_iterator(folder.path())) {
            if (file.path().string().ends_with(ending))
                found.push_back(file.path());
        }
        return found;
    }

    void touch(const std::string& name) const { const std::ofstream file(folder.path() / name); }

    /// The only report, once it has been made.
    std::string report() const {
        CrashFinisher(folder.path()).finish();
        const auto reports = files(".crash");
        EXPECT_EQ(reports.size(), 1U);
        return reports.size() == 1 ? support::contentOf(reports[0]) : std::string();
    }

    const support::PrivateFolder folder;
};

/// The first frame in the program itself, but for the handler of exceptions.
std::string ownFrame(const std::string& report) {
    const std::string module = " dying_program + ";
    std::size_t own = report.find(module, report.find("\nFrames:\n"));
    while (own != std::string::npos) {
        std::string frame = report.substr(own, report.find('\n', own) - own);
        if (frame.find("::terminated()") == std::string::npos)
            return frame;
        own = report.find(module, own + module.size());
    }
    return report;
}

struct Manner {
    const char* name;
    const char* function; ///< in which it dies
    std::vector<std::string> texts;
    int signal;
    bool isInnermost = true; ///< no function of a library has been called
};

const std::vector<Manner> manners{
    {"access",
     "dieOfBadAccess",
     {"SIGSEGV (Segmentation fault), nothing", "Address:      0x0"},
     SIGSEGV},
    {"shortFile", "dieOfShortFile", {"SIGBUS (Bus error), no memory"}, SIGBUS},
    {"division", "dieOfDivision", {"SIGFPE", "integer division by zero"}, SIGFPE},
    {"instruction", "dieOfBadInstruction", {"SIGILL"}, SIGILL},
    {"breakpoint", "dieOfBreakpoint", {"SIGTRAP", "by the program itself"}, SIGTRAP, false},
    {"systemCall", "dieOfSystemCall", {"SIGSYS", "by the program itself"}, SIGSYS, false},
    {"nowhere", "dieOfCallToNowhere", {"Frames:\n0 0x0\n1 dying_program"}, SIGSEGV, false},
    {"sent", "dieOfSentSignal", {"SIGSEGV", "sent by a process"}, SIGSEGV, false},
    {"abort", "dieOfAbort", {"SIGABRT (Aborted), sent by the program itself"}, SIGABRT, false},
    {"exception",
     "dieOfException",
     {"Exception:    std::runtime_error\n", "Message:      the text of it\n"},
     SIGABRT,
     false},
    {"number", "dieOfNumber", {"Exception:    int\n"}, SIGABRT, false},
    {"noexcept", "dieOfException", {"the text of it", "dieOfException2"}, SIGABRT, false},
    {"threadException", "dieOfException", {"the text of it", " dying\n"}, SIGABRT, false},
    {"pure", "Abstract::callUnfinished", {"__cxa_pure_virtual"}, SIGABRT, false},
    {"overflow", "dieOfOverflow", {"… and more"}, SIGSEGV},
    {"threadOverflow", "dieOfOverflow", {"… and more", " dying\n"}, SIGSEGV},
    {"standardThreadOverflow", "dieOfOverflow", {"… and more"}, SIGSEGV},
    {"poolOverflow", "dieOfOverflow", {"… and more"}, SIGSEGV},
    {"queueOverflow", "dieOfOverflow", {"… and more", " dispatch\n"}, SIGSEGV},
    {"malloc", "dieInMalloc", {"libc.so.6 + 0x"}, SIGSEGV, false},
    {"log", "dieOfBadAccess", {"Last line:    the last line\n"}, SIGSEGV},
    {"two", "dieOfBadAccess", {}, SIGSEGV},
};

TEST_F(CrashDeathTest, eachMannerOfDyingLeavesAReportAndStaysTheSame) {
    for (const Manner& manner : manners) {
        SCOPED_TRACE(manner.name);
        const int without = die("-", manner.name);
        EXPECT_EQ(without, bySignal + manner.signal);
        EXPECT_EQ(die(manner.name), without);
        ASSERT_EQ(files(".raw").size(), 1U);
        EXPECT_EQ(support::modeOf(files(".raw")[0]), mode_t{S_IRUSR | S_IWUSR});
        const std::string text = report();
        EXPECT_NE(ownFrame(text).find(manner.function), std::string::npos) << text;
        EXPECT_EQ(text.find("\n0 dying_program + ") != std::string::npos, manner.isInnermost);
        EXPECT_NE(ownFrame(text).find(".cpp:"), std::string::npos) << text;
        for (const std::string& each : manner.texts)
            EXPECT_NE(text.find(each), std::string::npos) << each << " in\n" << text;
        EXPECT_EQ(text.find("could not write"), std::string::npos) << text;
        EXPECT_EQ(files(".raw").size() + files(".prepared").size(), 0U);
        std::filesystem::remove(files(".crash").at(0));
    }
}

TEST_F(CrashDeathTest, theHandlersOwnFaultStillLeavesWhatWasWrittenBefore) {
    EXPECT_EQ(die("badStack"), bySignal + SIGSEGV);
    const std::string text = report();
    EXPECT_NE(text.find("\n0 dying_program + "), std::string::npos) << text;
    EXPECT_NE(ownFrame(text).find("dieWithBadStack"), std::string::npos) << text;
}

/// The alarm arrives in the main thread.
TEST_F(CrashDeathTest, aHandlerThatHangsGivesUp) {
    EXPECT_EQ(die("hang"), bySignal + SIGSEGV);
    const std::string text = report();
    EXPECT_NE(ownFrame(text).find("dieOfBadAccess"), std::string::npos) << text;
    EXPECT_NE(text.find("could not write all of it"), std::string::npos) << text;
}

TEST_F(CrashDeathTest, aDebuggerSeesTheCrashInstead) {
    const auto result = support::runCommand(
        {"strace", "-o", "/dev/null", TONVALE_DYING_PROGRAM, folder.path(), "exit"});
    EXPECT_EQ(result.status, 7);
    EXPECT_EQ(result.output, "1\n") << "it is off";
}

TEST_F(CrashDeathTest, anEarlierHandlerHasTheLastWord) {
    EXPECT_EQ(die(folder.path(), "access", {"chained"}), 42);
    EXPECT_NE(ownFrame(report()).find("dieOfBadAccess"), std::string::npos);
}

TEST_F(CrashDeathTest, nothingIsLeftByAProgramThatEndsOrIsKilled) {
    EXPECT_EQ(die("exit"), 7);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
    EXPECT_EQ(die("killed"), bySignal + SIGKILL);
    ASSERT_EQ(files(".prepared").size(), 1U);
    CrashFinisher(folder.path()).finish();
    EXPECT_EQ(files(".prepared").size(), 1U) << "the program may have just begun";
    std::filesystem::last_write_time(files(".prepared")[0],
                                     std::filesystem::file_time_type::clock::now() -
                                         std::chrono::minutes(2));
    EXPECT_EQ(CrashFinisher(folder.path()).finish(), 0U);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST_F(CrashDeathTest, whatIsSwitchedOffOrCannotBeWrittenDiesAllTheSame) {
    touch(".off");
    EXPECT_EQ(die("access"), bySignal + SIGSEGV);
    EXPECT_TRUE(files(".raw").empty()) << "it is switched off";
    std::filesystem::remove(folder.path() / ".off");
    for (const char* const where : {"/proc/version/x", "/dev/full", "/sys/kernel"}) {
        const auto result = support::runCommand({TONVALE_DYING_PROGRAM, where, "access"});
        EXPECT_EQ(result.status, bySignal + SIGSEGV) << where;
        EXPECT_NE(result.output.find("No crash could be reported: "), std::string::npos)
            << result.output;
    }
}

/// In a mount namespace of their own: a disk of a few pages, which one program fills before it
/// dies. Then the other finds it full.
TEST_F(CrashDeathTest, roomOnAFullDiskWasTakenBefore) {
    const std::filesystem::path disk = folder.path() / "disk";
    std::filesystem::create_directory(disk);
    const std::string script = R"(
        mount -t tmpfs -o size=200k none "$1" || exit 99
        mkdir "$1/reports"
        "$0" "$1/reports" fullDisk
        "$0" "$1/reports" access
        echo died of $?
        rm "$1/reports/filler"
        cp "$1"/reports/*.raw "$2")";
    const auto result = support::runCommand(
        {"unshare", "-rm", "sh", "-c", script, TONVALE_DYING_PROGRAM, disk, folder.path()});
    if (result.status == 99 || result.output.find("unshare failed") != std::string::npos)
        GTEST_SKIP() << "this machine allows no namespaces: " << result.output;
    EXPECT_NE(result.output.find("No crash could be reported"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("died of 139"), std::string::npos) << result.output;
    const std::string text = report();
    EXPECT_NE(ownFrame(text).find("dieOfBadAccess"), std::string::npos) << text;
    EXPECT_EQ(text.find("could not write"), std::string::npos) << text;
}

/// Those of another program do not count.
TEST_F(CrashDeathTest, aProgramThatDiesTooOftenIsSilentForAnHour) {
    touch("dying_program2_1.crash");
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(die("access"), bySignal + SIGSEGV);
    EXPECT_EQ(files(".raw").size(), 3U);
    EXPECT_EQ(CrashFinisher(folder.path()).finish(), 3U);
    die("access");
    EXPECT_TRUE(files(".raw").empty());
    for (const auto& file : files(".crash"))
        std::filesystem::last_write_time(file, std::filesystem::file_time_type::clock::now() -
                                                   std::chrono::minutes(61));
    die("access");
    EXPECT_EQ(files(".raw").size(), 1U) << "the hour is over";
}

} // namespace
