#include "tninstaller/Installer.h"

#include "support/Files.h"
#include "support/PrivateFolder.h"
#include "support/SystemLogRecorder.h"
#include "support/WaitUntil.h"
#include "support/WithoutCapabilities.h"
#include "tninstaller/InstallLock.h"
#include "tninstaller/TreeCopy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;
using support::contentOf;
using support::modeOf;

// By a caller with no more rights than the tool has.
namespace {

void write(const fs::path& file, const std::string& text) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

/// The paths in a folder, sorted; folders with a slash.
std::vector<std::string> listOf(const fs::path& folder) {
    std::vector<std::string> list;
    for (const auto& each : fs::recursive_directory_iterator(folder))
        list.push_back(fs::relative(each.path(), folder).string() +
                       (each.is_directory() && !each.is_symlink() ? "/" : ""));
    std::ranges::sort(list);
    return list;
}

class InstallerTest : public testing::Test {
  protected:
    InstallerTest() {
        write(plugin_ / "Contents/Info.plist", "the new one");
        write(plugin_ / "Contents/Linux/TonvalePlugin", "program");
        ::chmod((plugin_ / "Contents/Linux/TonvalePlugin").c_str(), 04775);
        ::chmod((plugin_ / "Contents").c_str(), 02777);
        write(bundle_ / "Contents/Info.plist", "<string>com.quarnel.Tonvale</string>");
    }

    InstallerReply run(const std::vector<std::string>& arguments) {
        return Installer(InstallerPlaces::of(bundle_ / "Contents/Helpers/TNInstaller", library_),
                         Caller(::geteuid(), ::getegid(), {}, false),
                         GuardedFolder::Trust::anybodys)
            .run(arguments);
    }

    int install() { return static_cast<int>(run({"i", plugin_, installed_}).code); }

    /// The old plug-in stands as it was, and nothing else is beside it.
    bool isUnchanged() const {
        return contentOf(installed_ / "old") == "old" &&
               std::distance(fs::directory_iterator(hal_), {}) == 1;
    }

    support::PrivateFolder folder_;
    support::SystemLogRecorder log_;
    const fs::path bundle_ = fs::canonical(folder_.path()) / "Tonvale.app";
    const fs::path plugin_ = bundle_ / "Contents/PlugIns/Tonvale.plugin";
    const fs::path library_ = folder_.path() / "Library";
    const fs::path hal_ = library_ / "Audio/Plug-Ins/HAL";
    const fs::path installed_ = hal_ / "Tonvale.plugin";
};

} // namespace

TEST_F(InstallerTest, InstallsTheTreeWithModesOfItsOwn) {
    const std::string notUtf8 = "na\xFFme\n";
    write(plugin_ / notUtf8, "odd");
    fs::create_directories(plugin_ / "empty/within");
    ::chmod((plugin_ / "Contents/Info.plist").c_str(), 0400);
    ASSERT_EQ(install(), 0);
    EXPECT_EQ(listOf(installed_), listOf(plugin_));
    EXPECT_EQ(contentOf(installed_ / notUtf8), "odd");
    EXPECT_EQ(modeOf(installed_ / "Contents/Info.plist"), 0644U);
    for (const char* const each : {"Contents/Linux/TonvalePlugin", "Contents", ".."})
        EXPECT_EQ(modeOf(fs::canonical(installed_ / each)), 0755U) << each;
}

TEST_F(InstallerTest, ReplacesWhateverIsThereAndSweepsWhatAKilledToolHasLeft) {
    const std::function<void()> situations[] = {[&] { write(installed_ / "old/deep/er", "old"); },
                                                [&] { write(installed_, "a file"); },
                                                [&] { fs::create_symlink(library_, installed_); }};
    for (const auto& prepare : situations) {
        fs::create_directories(hal_);
        prepare();
        write(hal_ / ".tninstaller-0123456789abcdef0123456789abcdef/Tonvale.plugin/x", "half");
        write(hal_ / ".tninstaller.lock", "");
        ::chmod((hal_ / ".tninstaller.lock").c_str(), 0600);
        write(hal_ / ".tninstaller-other", "somebody's");
        write(folder_.path() / ".tninstaller-fedcba9876543210fedcba9876543210/Tonvale.app/x", "");
        EXPECT_EQ(install(), 0);
        EXPECT_EQ(listOf(installed_), listOf(plugin_));
        EXPECT_EQ(std::distance(fs::directory_iterator(hal_), {}), 2);
        EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), {}), 2);
        fs::remove_all(library_);
    }
}

TEST_F(InstallerTest, LeavesTheStageOfAToolAtWorkAlone) {
    const fs::path stage = hal_ / ".tninstaller-0123456789abcdef0123456789abcdef";
    write(stage / "Tonvale.plugin/half", "half");
    const platform::FileDescriptor held(::open(stage.c_str(), O_RDONLY | O_DIRECTORY));
    ASSERT_EQ(::flock(held.get(), LOCK_EX), 0);
    EXPECT_EQ(install(), 0);
    EXPECT_EQ(run({"u", installed_}).code, InstallCode::success);
    EXPECT_TRUE(fs::exists(stage / "Tonvale.plugin/half"));
}

TEST_F(InstallerTest, OneToolAtATimeChangesWhatIsInstalled) {
    fs::create_directories(hal_);
    const GuardedFolder folder =
        *GuardedFolder::find(fs::canonical(hal_), GuardedFolder::Trust::anybodys);
    std::optional<InstallLock> lock(std::in_place, folder);
    EXPECT_THROW(InstallLock(folder, std::chrono::milliseconds(0)), InstallFailure);
    std::atomic<int> code = -1;
    std::thread other([&] { code = install(); });
    EXPECT_TRUE(support::waitUntil([&] { return listOf(hal_).size() > 4; })) << "of the copy";
    EXPECT_EQ(code, -1) << "it has not waited";
    EXPECT_FALSE(fs::exists(installed_));
    lock.reset();
    other.join();
    EXPECT_EQ(code, 0);
    EXPECT_EQ(std::distance(fs::directory_iterator(hal_), {}), 1);
}

TEST_F(InstallerTest, ALockThatSomebodyElseMayHoldDoesNotCount) {
    const fs::path lock = hal_ / ".tninstaller.lock";
    platform::FileDescriptor held;
    const std::function<void()> situations[] = {
        [&] { fs::create_symlink("/dev/null", lock); }, [&] { fs::create_directories(lock); },
        [&] { ::mkfifo(lock.c_str(), 0600); },
        [&] {
            held.reset(::open(lock.c_str(), O_RDWR | O_CREAT, 0644));
            ASSERT_EQ(::flock(held.get(), LOCK_EX), 0);
        }};
    for (const auto& prepare : situations) {
        fs::create_directories(hal_);
        prepare();
        EXPECT_EQ(install(), 0);
        EXPECT_EQ(run({"u", installed_}).code, InstallCode::success);
        EXPECT_FALSE(fs::exists(installed_));
        EXPECT_TRUE(fs::exists(fs::symlink_status(lock)));
        fs::remove_all(library_);
    }
}

TEST_F(InstallerTest, InstallsWhileOthersRemoveTheFoldersThatAreEmpty) {
    const pid_t other = ::fork();
    ASSERT_GE(other, 0);
    while (other == 0) {
        if (run({"u", installed_}).code != InstallCode::success)
            ::_exit(1);
    }
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(install(), 0);
    ::kill(other, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(other, &status, 0), other);
    EXPECT_TRUE(WIFSIGNALED(status)) << "an uninstallation has failed";
}

TEST_F(InstallerTest, RefusesWhatIsNotItsOwn) {
    struct Case {
        std::vector<std::string> arguments;
        InstallCode code;
        std::size_t index;
    };
    const std::string passwd = "/etc/passwd";
    const std::string detour = plugin_ / "../Tonvale.plugin";
    write(installed_ / "old", "old");
    for (const Case& each :
         {Case{{}, InstallCode::wrongArguments, 0}, Case{{"i"}, InstallCode::wrongArguments, 0},
          Case{{"i", plugin_}, InstallCode::wrongArguments, 0},
          Case{{"x", passwd}, InstallCode::wrongArguments, 0},
          Case{{"i", passwd, installed_}, InstallCode::refused, 0},
          Case{{"i", plugin_, passwd}, InstallCode::refused, 0},
          Case{{"i", detour, installed_}, InstallCode::refused, 0},
          Case{{"i", plugin_, installed_, plugin_, passwd}, InstallCode::refused, 1},
          Case{{"i", plugin_, installed_, plugin_, installed_}, InstallCode::refused, 1},
          Case{{"u", installed_, passwd}, InstallCode::refused, 1},
          Case{{"u", installed_, bundle_, installed_}, InstallCode::refused, 2},
          Case{{"u", library_}, InstallCode::refused, 0}}) {
        const InstallerReply reply = run(each.arguments);
        EXPECT_EQ(reply.code, each.code);
        EXPECT_EQ(reply.index, each.index);
        EXPECT_EQ(log_.lines().size(), 1U);
        EXPECT_TRUE(isUnchanged()) << "before all is checked";
        log_.clear();
    }
    for (const fs::path& tool : {folder_.path() / "TNInstaller", bundle_ / "TNInstaller"})
        EXPECT_THROW(InstallerPlaces::of(tool, library_), InstallFailure);
}

TEST_F(InstallerTest, ASourceThatHoldsAnythingButFilesAndFoldersLeavesTheOldPlugin) {
    const fs::path odd = plugin_ / "odd";
    const std::function<void()> faults[] = {
        [&] { fs::create_symlink("Contents", odd); },
        [&] { fs::create_symlink("/etc/passwd", odd); }, [&] { ::mkfifo(odd.c_str(), 0600); },
        [&] {
            fs::path deep = odd;
            for (int i = 0; i < 64; ++i)
                deep /= "x";
            fs::create_directories(deep);
        },
        [&] {
            fs::rename(plugin_, folder_.path() / "elsewhere");
            fs::create_symlink(folder_.path() / "elsewhere", plugin_);
        }};
    write(installed_ / "old", "old");
    for (const auto& make : faults) {
        make();
        EXPECT_EQ(install(), static_cast<int>(InstallCode::badSource));
        EXPECT_TRUE(isUnchanged());
        fs::remove_all(odd);
    }
}

TEST_F(InstallerTest, ReadsWithTheCallersRightsAndWithinLimits) {
    ::chmod((plugin_ / "Contents/Info.plist").c_str(), 0);
    write(installed_ / "old", "old");
    support::withoutCapabilities(
        [&] { EXPECT_EQ(install(), static_cast<int>(InstallCode::badSource)); });
    EXPECT_TRUE(isUnchanged());

    const Caller caller(::geteuid(), ::getegid(), {}, false);
    const GuardedFolder target =
        *GuardedFolder::find(fs::canonical(hal_), GuardedFolder::Trust::anybodys);
    for (const TreeCopy::Limits& limits :
         {TreeCopy::Limits{.entries = 3}, TreeCopy::Limits{.bytes = 17}}) {
        EXPECT_THROW(
            TreeCopy(caller, limits).copy(fs::canonical(plugin_), target.descriptor(), "copy"),
            InstallFailure);
        fs::remove_all(hal_ / "copy");
    }
    TreeCopy(caller, {.entries = 4, .bytes = 18})
        .copy(fs::canonical(plugin_), target.descriptor(), "copy");
}

TEST_F(InstallerTest, ADestinationThatCannotBeWrittenIsReportedAndLongPathsAreFine) {
    write(library_ / "Audio", "a file");
    EXPECT_EQ(install(), static_cast<int>(InstallCode::notWritten));
    EXPECT_EQ(run({"u", installed_}).code, InstallCode::notRemoved);
    fs::remove(library_ / "Audio");
    write(installed_ / "old", "old");
    ::chmod(hal_.c_str(), 0555);
    support::withoutCapabilities([&] {
        EXPECT_EQ(install(), static_cast<int>(InstallCode::notWritten));
        EXPECT_EQ(run({"u", installed_}).code, InstallCode::notRemoved);
    });
    EXPECT_TRUE(isUnchanged());

    constexpr std::size_t pathLength = 4000;
    std::string library = fs::canonical(folder_.path());
    while (library.size() < pathLength)
        library += '/' + std::string(99, 'x');
    const InstallerPlaces places =
        InstallerPlaces::of(bundle_ / "Contents/Helpers/TNInstaller", library);
    Installer installer(places, Caller(::geteuid(), ::getegid(), {}, false),
                        GuardedFolder::Trust::anybodys);
    const std::string destination = places.folder + "/Tonvale.plugin";
    EXPECT_EQ(installer.run({"i", plugin_, destination}).code, InstallCode::success);
    EXPECT_EQ(installer.run({"u", destination}).code, InstallCode::success);
    EXPECT_FALSE(fs::exists(library));
}

TEST_F(InstallerTest, UninstallsThePluginWithEmptyFoldersAndTheBundle) {
    ASSERT_EQ(install(), 0);
    write(library_ / "Audio/others", "");
    fs::create_directories(bundle_ / "locked");
    ::chmod((bundle_ / "locked").c_str(), 0555);
    EXPECT_EQ(run({"u", installed_, bundle_}).code, InstallCode::success);
    EXPECT_EQ(listOf(folder_.path()),
              (std::vector<std::string>{"Library/", "Library/Audio/", "Library/Audio/others"}));
    EXPECT_EQ(run({"u", installed_}).code, InstallCode::success) << "that is gone already";
}

TEST_F(InstallerTest, ABundleThatIsNotTonvalesOrAPackagesStays) {
    const std::function<void()> situations[] = {
        [&] { write(bundle_ / "Contents/Resources/package", "tonvale\n"); },
        [&] {
            fs::remove_all(bundle_ / "Contents/Resources");
            write(bundle_ / "Contents/Info.plist", "<string>com.quarnel.TonvaleHelper</string>");
        }};
    for (const auto& prepare : situations) {
        prepare();
        write(installed_ / "old", "old");
        EXPECT_EQ(run({"u", installed_, bundle_}).code, InstallCode::refused);
        EXPECT_TRUE(fs::exists(plugin_) && isUnchanged());
    }
}

TEST(InstallerReply, IsAPropertyList) {
    const std::string text =
        InstallerReply{.code = InstallCode::badSource, .index = 2}.propertyList();
    EXPECT_NE(text.find("<key>MVInstallerErrorKey</key>\n\t<integer>4</integer>"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("<key>MVInstallerIndexKey</key>\n\t<integer>2</integer>"),
              std::string::npos)
        << text;
}
