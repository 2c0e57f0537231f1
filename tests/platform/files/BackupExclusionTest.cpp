#include "platform/files/BackupExclusion.h"

#include "support/Files.h"
#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <sys/stat.h>

using platform::excludeFromBackups;
using platform::isExcludedFromBackups;
using support::contentOf;

TEST(BackupExclusion, WritesTheMarkThatBackupToolsKnowOnce) {
    const support::PrivateFolder folder;
    const auto tag = folder.path() / "CACHEDIR.TAG";
    EXPECT_FALSE(isExcludedFromBackups(folder.path()));
    ASSERT_TRUE(excludeFromBackups(folder.path()));
    EXPECT_TRUE(isExcludedFromBackups(folder.path()));
    EXPECT_TRUE(contentOf(tag).starts_with("Signature: 8a477f597d28d172789f06886806bc55\n"));

    const std::string own = "Signature: 8a477f597d28d172789f06886806bc55";
    std::ofstream(tag, std::ios::trunc) << own;
    EXPECT_TRUE(excludeFromBackups(folder.path()));
    EXPECT_EQ(contentOf(tag), own) << "one that is there is left alone";
}

TEST(BackupExclusion, IsNotFooledByWhatOnlyHasTheName) {
    const support::PrivateFolder folder;
    const auto tag = folder.path() / "CACHEDIR.TAG";
    std::ofstream(tag) << "Signature: 8a477f597d28d172789f06886806bc5";
    EXPECT_FALSE(isExcludedFromBackups(folder.path()));
    EXPECT_FALSE(excludeFromBackups(folder.path()));
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(contentOf(tag).back(), '5');
    std::filesystem::remove(tag);

    const support::PrivateFolder other;
    ASSERT_TRUE(excludeFromBackups(other.path()));
    std::filesystem::create_symlink(other.path() / "CACHEDIR.TAG", tag);
    EXPECT_FALSE(isExcludedFromBackups(folder.path()));
    std::filesystem::remove(tag);

    ASSERT_EQ(::mkfifo(tag.c_str(), 0600), 0);
    EXPECT_FALSE(isExcludedFromBackups(folder.path())) << "and does not wait for a writer";
}
