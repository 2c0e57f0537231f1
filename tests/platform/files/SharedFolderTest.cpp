#include "platform/files/SharedFolder.h"

#include "support/FailingSharedFolderCalls.h"
#include "support/Files.h"
#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using platform::SharedFolder;
using support::contentOf;
using support::modeOf;

namespace fs = std::filesystem;

namespace {

constexpr mode_t mode = 0744;

class SharedFolderTest : public testing::Test {
  protected:
    SharedFolderTest() { fs::create_directory(folder_); }

    SharedFolder::Outcome put(const std::string& bytes = "new") {
        return SharedFolder(folder_, calls_).put("file", bytes, mode);
    }

    static void write(const fs::path& file, const std::string& bytes) {
        std::ofstream(file, std::ios::binary) << bytes;
    }

    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(folder_))
            found.push_back(entry.path().filename());
        std::ranges::sort(found);
        return found;
    }

    /// A link that another user has made. Only root can give one away; for anybody else, what the
    /// test makes becomes another's.
    void plantLink(const fs::path& target, const fs::path& link) {
        constexpr uid_t other = 12345;
        fs::create_symlink(target, link);
        if (::lchown(link.c_str(), other, other) != 0)
            calls_.userOffset = 1;
    }

    using Names = std::vector<std::string>;

    const support::PrivateFolder private_;
    const fs::path folder_ = private_.path() / "folder";
    const fs::path file_ = folder_ / "file";
    support::FailingSharedFolderCalls calls_;
};

} // namespace

TEST_F(SharedFolderTest, PutsFilesOfThatModeInPlaceOfWhateverHadTheName) {
    const std::string large(1 << 20, 'x');
    for (const std::string& bytes : {std::string("first"), std::string(), large}) {
        const SharedFolder::Outcome outcome = put(bytes);
        EXPECT_EQ(outcome.removing + outcome.writing + outcome.mode, 0);
        EXPECT_EQ(contentOf(file_), bytes);
        EXPECT_EQ(modeOf(file_), mode);
    }
    fs::remove(file_);
    fs::create_directory(file_);
    EXPECT_EQ(put().removing, 0);
    EXPECT_EQ(contentOf(file_), "new");
    EXPECT_EQ(names(), Names{"file"}) << "nothing is left beside it";
}

TEST_F(SharedFolderTest, ReplacesALinkAndNotWhatItLeadsTo) {
    const fs::path precious = private_.path() / "precious";
    write(precious, "precious");
    plantLink(precious, file_);
    plantLink(precious, folder_ / ".file.new");
    calls_.userOffset = 0;
    EXPECT_EQ(put().writing, 0);
    EXPECT_EQ(contentOf(precious), "precious");
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(file_)));
    EXPECT_EQ(contentOf(file_), "new");
    EXPECT_EQ(names(), Names{"file"});
}

TEST_F(SharedFolderTest, FollowsItsUsersLinksToTheFolderAndNoOthers) {
    const fs::path own = private_.path() / "own";
    const fs::path absolute = private_.path() / "absolute";
    const fs::path planted = private_.path() / "planted";
    fs::create_directory(folder_ / "inner");
    fs::create_symlink("folder", own);
    fs::create_symlink(own, absolute);
    EXPECT_EQ(SharedFolder(absolute / "inner/../inner/", calls_).put("file", "1", mode).writing, 0);
    EXPECT_EQ(contentOf(folder_ / "inner/file"), "1");

    fs::create_symlink("circle", private_.path() / "circle");
    EXPECT_EQ(SharedFolder(private_.path() / "circle", calls_).put("file", "2", mode).writing,
              ELOOP);
    plantLink("folder", planted);
    for (const fs::path& path : {planted, planted / "inner"})
        EXPECT_EQ(SharedFolder(path, calls_).put("file", "2", mode).writing, ELOOP) << path;
    EXPECT_EQ(contentOf(folder_ / "inner/file"), "1");
    EXPECT_FALSE(fs::exists(file_));
}

TEST_F(SharedFolderTest, ReportsFailuresAndKeepsExistingFilesWhole) {
    const struct {
        const char* what;
        std::atomic<int> support::FailingSharedFolderCalls::*call;
        int error;
        int removing, writing, mode; // with a file there
        int writingAfresh;           // without one
    } cases[] = {
        {"full at once", &support::FailingSharedFolderCalls::createError, ENOSPC, 0, ENOSPC, 0,
         ENOSPC},
        {"not ours", &support::FailingSharedFolderCalls::createError, EACCES, EACCES, 0, 0, EACCES},
        {"read-only", &support::FailingSharedFolderCalls::createError, EROFS, EROFS, 0, 0, EROFS},
        {"full meanwhile", &support::FailingSharedFolderCalls::writeError, ENOSPC, 0, ENOSPC, 0,
         ENOSPC},
        {"full at the end", &support::FailingSharedFolderCalls::closeError, EDQUOT, 0, EDQUOT, 0,
         EDQUOT},
        {"sticky", &support::FailingSharedFolderCalls::renameError, EPERM, EPERM, 0, 0, EPERM},
        {"broken", &support::FailingSharedFolderCalls::renameError, EIO, 0, EIO, 0, EIO},
        {"mode", &support::FailingSharedFolderCalls::modeError, EPERM, 0, 0, EPERM, 0},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        fs::remove(file_);
        calls_.*each.call = each.error;
        EXPECT_EQ(put().writing, each.writingAfresh);
        EXPECT_EQ(names().size(), each.writingAfresh == 0 ? 1U : 0U);
        write(file_, "old");
        const SharedFolder::Outcome outcome = put();
        calls_.*each.call = 0;
        EXPECT_EQ(outcome.removing, each.removing);
        EXPECT_EQ(outcome.writing, each.writing);
        EXPECT_EQ(outcome.mode, each.mode);
        EXPECT_EQ(contentOf(file_), each.mode != 0 ? "new" : "old");
        EXPECT_EQ(names(), Names{"file"});
    }
    const SharedFolder::Outcome nowhere =
        SharedFolder(folder_ / "none", calls_).put("f", "x", mode);
    EXPECT_EQ(nowhere.writing, ENOENT);
    EXPECT_EQ(SharedFolder(file_, calls_).put("f", "x", mode).writing, ENOTDIR);
}

TEST_F(SharedFolderTest, AFolderThatIsNotEmptyStaysAndATemporaryNameThatCannotBeHadDoesNotStopIt) {
    fs::create_directories(folder_ / ".file.new/precious");
    EXPECT_EQ(put().writing, 0);
    EXPECT_EQ(contentOf(file_), "new");
    fs::remove(file_);
    fs::create_directories(file_ / "precious");
    EXPECT_EQ(put().removing, ENOTEMPTY);
    EXPECT_TRUE(fs::exists(file_ / "precious"));
    EXPECT_EQ(names(), (Names{".file.new", "file"}));
}

TEST_F(SharedFolderTest, HidesAFileByAddingALine) {
    const fs::path list = folder_ / ".hidden";
    const auto hidden = [&](const char* former) {
        write(list, former);
        SharedFolder(folder_, calls_).hide("file");
        return contentOf(list);
    };
    SharedFolder(folder_, calls_).hide("file");
    EXPECT_EQ(contentOf(list), "file\n");
    EXPECT_EQ(modeOf(list), 0644U);
    ::chmod(list.c_str(), 0600);
    EXPECT_EQ(hidden("other"), "other\nfile\n");
    EXPECT_EQ(modeOf(list), 0600U);
    EXPECT_EQ(hidden("other\nfile"), "other\nfile");
    EXPECT_EQ(hidden("my file\nfile.txt\n"), "my file\nfile.txt\nfile\n");
    const std::string endless(70000, 'x');
    EXPECT_EQ(hidden(endless.c_str()), endless);
    EXPECT_EQ(names(), Names{".hidden"});
}

TEST_F(SharedFolderTest, HidesNothingThroughALinkOrInAnothersFolder) {
    const fs::path precious = private_.path() / "precious";
    write(precious, "precious");
    fs::create_symlink(precious, folder_ / ".hidden");
    SharedFolder(folder_, calls_).hide("file");
    EXPECT_EQ(contentOf(precious), "precious");
    EXPECT_TRUE(fs::is_symlink(folder_ / ".hidden"));
    fs::remove(folder_ / ".hidden");
    calls_.userOffset = 1;
    SharedFolder(folder_, calls_).hide("file");
    EXPECT_TRUE(fs::is_empty(folder_));
}
