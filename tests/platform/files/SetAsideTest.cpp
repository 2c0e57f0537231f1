#include "platform/files/SetAside.h"

#include "support/Files.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <sys/stat.h>

namespace fs = std::filesystem;
using platform::SetAside;
using support::contentOf;

namespace {

class SetAsideTest : public testing::Test {
  protected:
    fs::path make(const std::string& content) const {
        fs::create_directories(bundle_);
        std::ofstream(bundle_ / "content") << content;
        return bundle_;
    }

    const support::PrivateFolder folder_;
    const support::ScopedVariable data_{"XDG_DATA_HOME", folder_.path() / "data"};
    const fs::path trash_ = folder_.path() / "data/Trash";
    const fs::path bundle_ = folder_.path() / "a \"b\" ü%.app";
};

bool areOnOneDisk(const fs::path& one, const fs::path& other) {
    struct stat first {};
    struct stat second {};
    return ::stat(one.c_str(), &first) == 0 && ::stat(other.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev;
}

} // namespace

TEST_F(SetAsideTest, TheTrashKeepsEachWithWhereItCameFrom) {
    const auto first = SetAside::anywhere(make("first"));
    const auto second = SetAside::anywhere(make("second"));
    ASSERT_TRUE(first && second);
    EXPECT_FALSE(fs::exists(bundle_));
    EXPECT_EQ(contentOf(trash_ / "files/a \"b\" ü%.app/content"), "first");
    EXPECT_EQ(contentOf(trash_ / "files/a \"b\" ü% 2.app/content"), "second");
    const std::string information = contentOf(trash_ / "info/a \"b\" ü% 2.app.trashinfo");
    const std::string path = folder_.path().string() + "/a%20%22b%22%20%C3%BC%25.app";
    EXPECT_TRUE(information.starts_with("[Trash Info]\nPath=" + path + "\nDeletionDate=20"))
        << information;

    EXPECT_TRUE(second->putBack());
    EXPECT_EQ(contentOf(bundle_ / "content"), "second");
    EXPECT_FALSE(fs::exists(trash_ / "info/a \"b\" ü% 2.app.trashinfo"));
    EXPECT_FALSE(first->putBack()) << "its place is taken";
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(contentOf(first->place() / "content"), "first");
}

TEST_F(SetAsideTest, WhatTheTrashCannotTakeIsRenamedBeside) {
    const support::PrivateFolder trashes;
    const fs::path shared = "/dev/shm"; // another file system, as a rule
    const bool isOther = !areOnOneDisk(shared, folder_.path());
    const support::ScopedVariable far("XDG_DATA_HOME",
                                      isOther ? shared / trashes.path().filename() : "/proc/none");
    for (const char* const name : {"a \"b\" ü% 2.app", "a \"b\" ü% 3.app"}) {
        const auto moved = SetAside::anywhere(make(name));
        ASSERT_TRUE(moved);
        EXPECT_EQ(moved->place(), folder_.path() / name);
        EXPECT_EQ(contentOf(folder_.path() / name / "content"), name);
    }
    EXPECT_FALSE(SetAside::toTrash(make("")));
    EXPECT_FALSE(SetAside::anywhere(folder_.path() / "missing"));
    if (isOther)
        fs::remove_all(shared / trashes.path().filename());
}

TEST_F(SetAsideTest, KnowsTrashFolders) {
    for (const fs::path& in :
         {trash_ / "files/A.app", fs::path("/x/.Trash/A.app"), fs::path("/x/.Trash-1000/files/A"),
          fs::path("/x/.Trashes/501/A.app")})
        EXPECT_TRUE(platform::isInTrash(in)) << in;
    for (const char* const out : {"/x/.Trash", "/x/.Trash-old/A.app", "/x/Trash/A.app", "/opt/A"})
        EXPECT_FALSE(platform::isInTrash(out)) << out;
}
