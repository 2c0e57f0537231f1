#include "framework/log/LogRotation.h"

#include "LogFixture.h"

#include <cstdlib>
#include <filesystem>
#include <map>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

using Files = std::map<std::string, std::string>; // name to content

Files filesIn(const fs::path& folder) {
    Files files;
    for (const auto& entry : fs::directory_iterator(folder))
        files[entry.path().filename()] = contentOf(entry.path());
    return files;
}

/// The names of the backups that are reported, "-" for none.
std::string reportedBackups(const std::string& path) {
    std::size_t count = 0;
    char** const files = qnlog_rotated_files(path.c_str(), &count);
    std::string names;
    for (std::size_t i = 0; i < count; ++i) {
        names += files[i] ? fs::path(files[i]).filename().string() + " " : "- ";
        std::free(files[i]);
    }
    std::free(static_cast<void*>(files));
    return names;
}

} // namespace

TEST_F(LogTest, SevenStartsWithGapsKeepFiveBackups) {
    const std::string file = path("Tonvale.log");
    const fs::path folder = fs::path(file).parent_path();
    for (int run = 1; run <= 7; ++run) {
        openLog(file, QNLOG_ROTATE); // an empty file
        makeFile("Tonvale.log", "run " + std::to_string(run));
    }
    EXPECT_EQ(filesIn(folder), (Files{{"Tonvale.log", "run 7"},
                                      {"Tonvale0.log", "run 6"},
                                      {"Tonvale1.log", "run 5"},
                                      {"Tonvale2.log", "run 4"},
                                      {"Tonvale3.log", "run 3"},
                                      {"Tonvale4.log", "run 2"}}));
    EXPECT_EQ(reportedBackups(file),
              "Tonvale0.log Tonvale1.log Tonvale2.log Tonvale3.log Tonvale4.log ");
    for (const int gone : {0, 1, 2, 3})
        fs::remove(QN::log::backupPath(file, gone));
    openLog(file, QNLOG_ROTATE);
    EXPECT_EQ(filesIn(folder), (Files{{"Tonvale.log", ""}, {"Tonvale0.log", "run 7"}}));
    EXPECT_EQ(reportedBackups(file), "Tonvale0.log - - - - ");
}

TEST_F(LogTest, BackupsOfOtherNamesAndThroughLinksAreFoundWhereTheFileIs) {
    makeFile("noextension", "a");
    openLog(path("noextension"), QNLOG_ROTATE);
    EXPECT_EQ(contentOf(path("noextension0")), "a");

    fs::create_directory(path("elsewhere.d"));
    makeFile("elsewhere.d/two.dots.log", "b");
    fs::create_symlink("elsewhere.d/two.dots.log", path("link"));
    openLog(path("link"), QNLOG_ROTATE);
    EXPECT_EQ(contentOf(path("elsewhere.d/two.dots0.log")), "b");
    EXPECT_EQ(reportedBackups(path("link")), "two.dots0.log - - - - ");
    fs::create_symlink("elsewhere.d/later.log", path("dangling"));
    openLog(path("dangling"), QNLOG_ROTATE);
    EXPECT_TRUE(fs::exists(path("elsewhere.d/later.log")));
    EXPECT_EQ(QN::log::backupPath("folder.d/name", 3), "folder.d/name3");
    EXPECT_EQ(QN::log::backupPath("/x/.hidden", 3), "/x/.hidden3");
}

TEST_F(LogTest, WhatCannotBeRotatedIsToldAndTheRestGoesOn) {
    testing::internal::CaptureStderr();
    openLog(path(std::string(300, 'x')), QNLOG_ROTATE); // too long a name is no file to rotate
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    const std::string file = path("Tonvale.log");
    makeFile("Tonvale.log", "newest");
    makeFile("Tonvale3.log", "oldest");
    fs::create_directory(path("Tonvale4.log")); // neither a file to delete nor a place for one
    testing::internal::CaptureStderr();
    openLog(file, QNLOG_ROTATE);
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(told, "Can't unlink " + path("Tonvale4.log") + "\n" + "Can't rename " +
                        path("Tonvale3.log") + " to " + path("Tonvale4.log") + "\n");
    EXPECT_EQ(contentOf(path("Tonvale3.log")), "oldest");
    EXPECT_EQ(contentOf(path("Tonvale0.log")), "newest");
}
