#include "platform/files/DirectoryComparison.h"

#include "support/PrivateFolder.h"
#include "support/WithoutCapabilities.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

void write(const fs::path& file, std::string_view content) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
}

class DirectoryComparison : public testing::Test {
  protected:
    /// Two equal trees.
    void SetUp() override {
        for (const fs::path& root : {left(), right()}) {
            fs::remove_all(root);
            write(root / "a/file", std::string(200'000, 'x'));
            write(root / "a-b", "between a and a/ in the order of bytes");
            write(root / "none", "");
            fs::create_directories(root / "empty/nested");
        }
    }

    bool areEqual() const { return platform::isDirectoryEqualToDirectory(left(), right()); }
    fs::path left() const { return folder_.path() / "left"; }
    fs::path right() const { return folder_.path() / "right"; }

  private:
    const support::PrivateFolder folder_;
};

void changeByte(const fs::path& file, std::streamoff place) {
    std::fstream(file, std::ios::in | std::ios::out | std::ios::binary).seekp(place) << 'y';
}

/// The most memory that this process has had at once, in KiB.
long peakMemory() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

} // namespace

TEST_F(DirectoryComparison, TellsEveryDifferenceThatCounts) {
    const struct {
        const char* what;
        void (*change)(const fs::path& root);
        bool equal;
    } cases[] = {
        {"nothing", [](const fs::path&) {}, true},
        {"first byte", [](const fs::path& root) { changeByte(root / "a/file", 0); }, false},
        {"last byte", [](const fs::path& root) { changeByte(root / "a/file", 199'999); }, false},
        {"longer", [](const fs::path& root) { write(root / "none", "1"); }, false},
        {"shorter", [](const fs::path& root) { fs::resize_file(root / "a/file", 199'999); }, false},
        {"extra file", [](const fs::path& root) { write(root / "empty/nested/x", ""); }, false},
        {"extra folder", [](const fs::path& root) { fs::create_directory(root / "x"); }, false},
        {"missing file", [](const fs::path& root) { fs::remove(root / "none"); }, false},
        {"no empty folder", [](const fs::path& root) { fs::remove(root / "empty/nested"); }, false},
        {"folder for file",
         [](const fs::path& root) {
             fs::remove(root / "none");
             fs::create_directory(root / "none");
         },
         false},
        {"file for folder",
         [](const fs::path& root) {
             fs::remove(root / "empty/nested");
             write(root / "empty/nested", "");
         },
         false},
        {"another name at the same place",
         [](const fs::path& root) { fs::rename(root / "none", root / "nonf"); }, true},
        {"another name at another place",
         [](const fs::path& root) { fs::rename(root / "none", root / "0"); }, false},
        {"pipe for file",
         [](const fs::path& root) {
             fs::remove(root / "none");
             ::mkfifo((root / "none").c_str(), 0600);
         },
         false},
        {"link to an equal file",
         [](const fs::path& root) {
             fs::rename(root / "none", root.parent_path() / "outside");
             fs::create_symlink("../outside", root / "none");
         },
         true},
        {"broken link",
         [](const fs::path& root) {
             fs::remove(root / "none");
             fs::create_symlink("nowhere", root / "none");
         },
         false},
        {"link to its own folder",
         [](const fs::path& root) {
             fs::remove(root / "empty/nested");
             fs::create_symlink("..", root / "empty/nested");
         },
         true},
        {"file instead of the tree",
         [](const fs::path& root) {
             fs::remove_all(root);
             write(root, "");
         },
         false},
        {"no tree", [](const fs::path& root) { fs::remove_all(root); }, false},
    };
    for (const auto& [what, change, equal] : cases) {
        for (const fs::path& changed : {left(), right()}) {
            SetUp();
            change(changed);
            EXPECT_EQ(areEqual(), equal) << what << " in " << changed.filename();
        }
    }
}

TEST_F(DirectoryComparison, EmptyFoldersAreEqual) {
    for (const fs::path& root : {left(), right()}) {
        fs::remove_all(root);
        fs::create_directory(root);
    }
    EXPECT_TRUE(areEqual());
}

TEST_F(DirectoryComparison, WhatCannotBeReadIsDifferent) {
    const auto areEqualForUser = [this] {
        bool equal = false;
        support::withoutCapabilities([&] { equal = areEqual(); });
        return equal;
    };
    EXPECT_TRUE(areEqualForUser());
    for (const char* hidden : {"none", "empty"}) {
        fs::permissions(left() / hidden, fs::perms::none);
        fs::permissions(right() / hidden, fs::perms::none);
        EXPECT_FALSE(areEqualForUser()) << hidden;
        fs::permissions(left() / hidden, fs::perms(0755));
        fs::permissions(right() / hidden, fs::perms(0755));
    }
}

TEST_F(DirectoryComparison, LargeFilesTakeNoMoreMemoryThanSmallOnes) {
    for (const fs::path& root : {left(), right()}) {
        write(root / "large", "");
        fs::resize_file(root / "large", 1U << 30U); // a hole: no room on the disk
    }
    const long before = peakMemory();
    EXPECT_TRUE(areEqual());
    EXPECT_LT(peakMemory() - before, 8 * 1024);
}
