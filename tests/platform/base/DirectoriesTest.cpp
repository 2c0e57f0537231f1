#include "platform/base/Directories.h"

#include "support/Files.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

using platform::Domain;
using platform::makeDirectories;
using support::modeOf;
using support::ScopedVariable;

namespace {

struct HomeFolder {
    const char* variable;
    std::string (*folder)();
    const char* inHome;
};

const std::array homeFolders{
    HomeFolder{"XDG_DATA_HOME", [] { return platform::applicationSupportDirectory(Domain::user); },
               "/.local/share"},
    HomeFolder{"XDG_STATE_HOME", &platform::logsDirectory, "/.local/state"},
    HomeFolder{"XDG_CONFIG_HOME", &platform::preferencesDirectory, "/.config"},
};

} // namespace

TEST(Directories, FollowTheVariablesThatHoldAbsolutePathsAndElseLieInTheHome) {
    const ScopedVariable home("HOME", "/home/of me");
    for (const auto& [variable, folder, inHome] : homeFolders) {
        const ScopedVariable moved(variable, "/else where");
        EXPECT_EQ(folder(), "/else where");
        using Value = std::optional<std::string>;
        for (const Value& unusable : {Value(), Value(""), Value("relative/folder"), Value("~/x")}) {
            const ScopedVariable value(variable, unusable);
            EXPECT_EQ(folder(), std::string("/home/of me") + inHome) << unusable.value_or("unset");
        }
    }
}

TEST(Directories, TakeTheHomeOfTheUserEntryWhenTheVariableNamesNone) {
    const passwd* const entry = ::getpwuid(::getuid());
    const std::string expected = entry != nullptr ? entry->pw_dir : "";
    for (const char* const unusable : {"", "here"}) {
        const ScopedVariable home("HOME", unusable);
        for (const auto& [variable, folder, inHome] : homeFolders) {
            const ScopedVariable unset(variable, std::nullopt);
            EXPECT_EQ(folder(), expected.empty() ? "" : expected + inHome);
        }
    }
}

TEST(Directories, MoveTheLocalLibraryWithItsVariable) {
    const ScopedVariable moved("TONVALE_LOCAL_LIBRARY", "/srv/library");
    EXPECT_EQ(platform::localLibraryDirectory(), "/srv/library");
    EXPECT_EQ(platform::applicationSupportDirectory(Domain::local),
              "/srv/library/Application Support");
    const ScopedVariable unset("TONVALE_LOCAL_LIBRARY", "");
    EXPECT_EQ(platform::localLibraryDirectory(), TONVALE_LOCAL_LIBRARY);
}

TEST(MakeDirectories, GivesNewFoldersTheModeAndLeavesOldOnesAlone) {
    const support::PrivateFolder folder;
    const std::string top = folder.path() / "top";
    const mode_t mask = ::umask(077);
    ASSERT_EQ(::mkdir(top.c_str(), 0700), 0);
    ASSERT_EQ(::chmod(top.c_str(), 02710), 0); // hands its group down
    EXPECT_TRUE(makeDirectories(top + "//new/inner/", 0775));
    ::umask(mask);
    EXPECT_EQ(modeOf(top), 02710U);
    EXPECT_EQ(modeOf(top + "/new"), 02775U);
    EXPECT_EQ(modeOf(top + "/new/inner"), 02775U);

    EXPECT_TRUE(makeDirectories(top + "/new/inner", 0700));
    EXPECT_EQ(modeOf(top + "/new/inner"), 02775U);
    std::filesystem::create_directory_symlink("new", top + "/link");
    EXPECT_TRUE(makeDirectories(top + "/link/more", 0700));
    EXPECT_TRUE(std::filesystem::is_directory(top + "/new/more"));
}

TEST(MakeDirectories, ReportsWhyItCannot) {
    const support::PrivateFolder folder;
    const std::string file = folder.path() / "file";
    std::ofstream(file) << "no folder";
    for (const auto& [path, expected] :
         {std::pair(file, ENOTDIR), std::pair(file + "/inside", ENOTDIR),
          std::pair(std::string(), ENOENT), std::pair(std::string("/proc/nothing/here"), ENOENT)}) {
        errno = 0;
        EXPECT_FALSE(makeDirectories(path, 0700)) << path;
        EXPECT_EQ(errno, expected) << path;
    }
}
