#include "framework/crash/CrashFinisher.h"

#include "platform/base/WallClock.h"
#include "platform/crash/CrashRecord.h"
#include "support/Files.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/SystemLogRecorder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

using platform::WallClock;

/// Soon after the crashes.
WallClock::time_point later() noexcept {
    return WallClock::time_point(std::chrono::seconds(1700000200));
}

class CrashFinisherTest : public testing::Test {
  protected:
    void SetUp() override { WallClock::replaceSource(&later); }
    void TearDown() override { WallClock::replaceSource(nullptr); }

    void write(const std::string& name, const std::string& content) const {
        std::ofstream(folder.path() / name, std::ios::binary) << content;
    }

    std::size_t count(const std::string& ending) const {
        std::size_t found = 0;
        for (const auto& file : std::filesystem::directory_iterator(folder.path()))
            found += file.path().string().ends_with(ending) ? 1U : 0U;
        return found;
    }

    const support::PrivateFolder folder;
    const CrashFinisher finisher{folder.path()};
    support::SystemLogRecorder log;
};

std::string recordOf(const std::string& lines) {
    return std::string(platform::crashRecordTitle) + "\nprogram Tonvale\nversion 1.0\npid 7\n" +
           "started 1700000000\ntime 1700000100\n" + lines;
}

TEST_F(CrashFinisherTest, theReportHasTheTimeOfTheCrash) {
    write("Tonvale-7.raw", recordOf("signal 11\ncode 1\naddress 0x10\nend\n"));
    write("Tonvale-8.raw", recordOf("signal 6\ncode -6\nend\n"));
    EXPECT_EQ(finisher.finish(), 2U);
    const std::filesystem::path report = folder.path() / "Tonvale_2023-11-14-221500.crash";
    struct stat status {};
    ASSERT_EQ(::stat(report.c_str(), &status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 1700000100);
    EXPECT_EQ(support::modeOf(report), mode_t{S_IRUSR | S_IWUSR});
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "Tonvale_2023-11-14-221500-2.crash"));
    EXPECT_EQ(finisher.finish(), 0U);
}

TEST_F(CrashFinisherTest, whatIsDamagedStillBecomesAReport) {
    const struct {
        const char* record;
        const char* text;
    } cases[] = {
        {"Tonvale crash record 2\nnewline x\n", "another version of the program"},
        {"", "another version of the program"},
        {"Tonvale crash record 1\nprogram Tonvale\nsignal 11\ncode 1\nframe 0x1",
         "could not write"},
        {"Tonvale crash record 1\nmap \nmap z\nregister\nmodule\nframe x\nsignal q\nend\n",
         "Signal:       unknown"},
        {"Tonvale crash record 1\nmap 0-ffffffffffffffff r-xp 0 0 0 /etc/passwd\nframe 0x5\nend\n",
         "0 passwd + 0x5"},
    };
    for (const auto& each : cases) {
        write("Tonvale-7.raw", each.record);
        EXPECT_EQ(finisher.finish(), 1U) << each.record;
        ASSERT_EQ(count(".crash"), 1U) << each.record;
        const auto report = std::filesystem::directory_iterator(folder.path())->path();
        EXPECT_NE(support::contentOf(report).find(each.text), std::string::npos)
            << support::contentOf(report);
        std::filesystem::remove(report);
    }
}

TEST_F(CrashFinisherTest, aReportTellsNothingAboutThePerson) {
    const support::ScopedVariable home("HOME", "/home/somebody-else");
    write("Tonvale-7.raw",
          recordOf("signal 6\nmessage can't read /home/somebody-else/a\x01\xff.txt\n"
                   "log mail of me@example.org\nmodule 0x1000 0123456789abcdef0123456789abcdef0\n"
                   "map 1000-2000 r-xp 0 0 0    /home/somebody-else/lib/a b.so (deleted)\n"
                   "frame 0x1001\nend\n"));
    EXPECT_EQ(finisher.finish(), 1U);
    const std::string text =
        support::contentOf(std::filesystem::directory_iterator(folder.path())->path());
    EXPECT_EQ(text.find("somebody-else"), std::string::npos) << text;
    EXPECT_NE(text.find("can't read [home]/a\\u0001\\xff.txt"), std::string::npos) << text;
    EXPECT_NE(text.find("build id 0123456789abcdef0123456789abcdef0"), std::string::npos) << text;
    EXPECT_NE(text.find("0 a b.so (deleted) + 0x1"), std::string::npos) << text;
}

TEST_F(CrashFinisherTest, theNewestTwentyOfThirtyDaysStay) {
    WallClock::replaceSource(nullptr);
    const auto now = std::filesystem::file_time_type::clock::now();
    for (int i = 0; i < 30; ++i) {
        const std::string name = "Tonvale_" + std::to_string(i) + ".crash";
        write(name, "");
        std::filesystem::last_write_time(folder.path() / name, now - std::chrono::hours(36 * i));
    }
    finisher.finish();
    EXPECT_EQ(count(".crash"), 20U);
    for (int i = 0; i < 30; ++i)
        EXPECT_EQ(
            std::filesystem::exists(folder.path() / ("Tonvale_" + std::to_string(i) + ".crash")),
            i < 20);
}

TEST_F(CrashFinisherTest, aReportThatCannotBeWrittenIsTriedAgain) {
    write("Tonvale-7.raw", recordOf("signal 6\nend\n"));
    std::filesystem::create_directory(folder.path() / ".new");
    EXPECT_EQ(finisher.finish(), 0U);
    EXPECT_TRUE(log.contains("Couldn't write the crash report"));
    std::filesystem::remove(folder.path() / ".new");
    EXPECT_EQ(finisher.finish(), 1U);
}

TEST_F(CrashFinisherTest, aProgramWithMoreRightsGetsItsReportFromOutside) {
    const CrashFinisher inner((folder.path() / "new/folder").string());
    EXPECT_TRUE(inner.reportSignal({.name = "TNInstaller", .version = "1.0", .build = ""}, SIGBUS));
    const auto report = std::filesystem::directory_iterator(folder.path() / "new/folder")->path();
    EXPECT_TRUE(report.filename().string().starts_with("TNInstaller_"));
    EXPECT_NE(support::contentOf(report).find("SIGBUS"), std::string::npos);
}

} // namespace
