#include "naming/DesktopEntries.h"
#include "naming/DesktopEntriesWatch.h"
#include "naming/ProgramFiles.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "support/ManualClock.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/WaitUntil.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

class DesktopEntriesTest : public testing::Test {
  protected:
    static void write(const fs::path& path, const std::string& name, const std::string& more = {}) {
        fs::create_directories(path.parent_path());
        std::ofstream(path) << "[Desktop Entry]\nType=Application\nName=" << name
                            << "\nExec=" << name << "\n"
                            << more;
    }

    std::string nameOf(const DesktopEntries& entries, const char* id) const {
        const DesktopEntry* const entry = entries.find(id);
        return entry != nullptr ? entry->name : "";
    }

    const support::PrivateFolder folder_;
    const fs::path first_ = folder_.path() / "first";
    const fs::path second_ = folder_.path() / "second/deeper";
    const ProgramFiles files_;
};

class DesktopEntriesWatchTest : public DesktopEntriesTest {
  protected:
    /// Whether the change is told within the length of a burst.
    bool isTold(const std::function<void()>& change) {
        const int before = calls_;
        change();
        // The clock stops until the change has been noticed.
        return support::waitUntil([&] {
            clock_.advance(200ms);
            loop_.turn();
            return calls_ > before;
        });
    }

    support::ManualClock clock_;
    platform::RunLoop loop_;
    const platform::MainQueueService mainQueue_{loop_};
    DesktopEntries entries_{{first_.string(), second_.string()}, {}, files_};
    int calls_ = 0;
};

} // namespace

TEST_F(DesktopEntriesTest, AreSearchedInTheOrderOfTheBaseDirectories) {
    const support::ScopedVariable home("XDG_DATA_HOME", "/home/ann/data");
    const support::ScopedVariable dirs("XDG_DATA_DIRS", "/one/:relative::/two:/one");
    EXPECT_THAT(DesktopEntries::usualFolders(),
                testing::ElementsAre("/home/ann/data/applications", "/one/applications",
                                     "/two/applications", "/usr/local/share/applications",
                                     "/usr/share/applications",
                                     "/home/ann/data/flatpak/exports/share/applications",
                                     "/var/lib/flatpak/exports/share/applications",
                                     "/var/lib/snapd/desktop/applications"));
}

TEST_F(DesktopEntriesTest, CountWhereTheirProgramIsTheUsersOwnWhateverTheSearchPath) {
    const fs::path home = folder_.path() / "home";
    fs::create_directories(home / ".local/bin");
    fs::copy_file("/bin/true", home / ".local/bin/own-player");
    write(first_ / "own.desktop", "own-player", "TryExec=own-player\n");
    write(first_ / "missing.desktop", "missing-player", "TryExec=missing-player\n");
    const support::ScopedVariable variable("HOME", home);
    const support::ScopedVariable path("PATH", "/usr/bin");
    const ProgramFiles files;
    const DesktopEntries entries({first_}, {}, files);
    EXPECT_EQ(nameOf(entries, "own"), "own-player");
    EXPECT_EQ(entries.ofProgram((home / ".local/bin/own-player").string()).size(), 1U);
    EXPECT_EQ(entries.find("missing"), nullptr);
}

TEST_F(DesktopEntriesTest, OfAnEarlierFolderTakeThePlaceOfLaterOnes) {
    write(first_ / "a.desktop", "first-a");
    write(second_ / "a.desktop", "second-a");
    write(second_ / "b.desktop", "second-b");
    write(first_ / "c.desktop", "hidden", "Hidden=true\n");
    write(second_ / "c.desktop", "second-c");
    write(second_ / "kde/d.desktop", "second-d");
    write(second_ / "link.desktop", "x", "Type=Link\n");
    std::ofstream(second_ / "broken.desktop") << "no key file";
    std::ofstream(second_ / "e.txt") << "[Desktop Entry]\nType=Application\nName=e\n";
    fs::create_directory_symlink(".", second_ / "circle");
    const DesktopEntries entries({first_, second_, folder_.path() / "missing"}, {}, files_);
    EXPECT_EQ(nameOf(entries, "a"), "first-a");
    EXPECT_EQ(nameOf(entries, "a.desktop"), "first-a");
    EXPECT_EQ(nameOf(entries, "b"), "second-b");
    EXPECT_EQ(entries.find("c"), nullptr);
    EXPECT_EQ(nameOf(entries, "kde-d"), "second-d");
    for (const char* const none : {"link", "broken", "e", "", "d"})
        EXPECT_EQ(entries.find(none), nullptr) << none;
    EXPECT_TRUE(entries.ofProgram("").empty());
}

TEST_F(DesktopEntriesTest, AreReadAgainOnlyWhenTheyHaveChangedOrTheLanguageHas) {
    write(first_ / "a.desktop", "a", "Name[de]=ah\nName[de_AT]=eh\nName[pt_BR]=oh\n");
    DesktopEntries entries({first_}, {}, files_);
    const std::uint64_t before = entries.generation();
    const DesktopEntry* const entry = entries.find("a");
    EXPECT_FALSE(entries.refresh());
    EXPECT_EQ(entries.generation(), before);
    EXPECT_EQ(entries.find("a"), entry);
    entries.setLanguages("de_CH.UTF-8");
    EXPECT_EQ(nameOf(entries, "a"), "ah");
    EXPECT_GT(entries.generation(), before);
    for (const auto& [language, name] : {std::pair("pt-BR", "oh"),
                                         {"de_AT:fr", "eh"},
                                         {"de_AT@euro", "eh"},
                                         {"en:de", "a"},
                                         {"fr:de", "ah"},
                                         {"C", "a"},
                                         {"", "a"}}) {
        entries.setLanguages(language);
        EXPECT_EQ(nameOf(entries, "a"), name) << language;
    }
}

TEST_F(DesktopEntriesWatchTest, FollowsFilesAndFoldersAsTheyComeAndGo) {
    const DesktopEntriesWatch watch(loop_, entries_, [this] { ++calls_; });
    EXPECT_EQ(entries_.size(), 0U);
    EXPECT_TRUE(isTold([&] { write(first_ / "a.desktop", "one"); }));
    EXPECT_TRUE(isTold([&] { write(second_ / "sub/b.desktop", "b"); })) << "two folders at once";
    EXPECT_TRUE(support::waitUntil([&] {
        clock_.advance(200ms);
        loop_.turn();
        return nameOf(entries_, "a") == "one" && nameOf(entries_, "sub-b") == "b";
    })) << "however the writing was cut into pieces";
    EXPECT_TRUE(isTold([&] { write(first_ / "a.desktop", "written in place"); }));
    EXPECT_TRUE(isTold([&] {
        write(first_ / ".new", "renamed");
        fs::rename(first_ / ".new", first_ / "a.desktop");
    }));
    EXPECT_EQ(nameOf(entries_, "a"), "renamed");
    EXPECT_TRUE(isTold([&] { write(first_ / "a.desktop", "written again"); }))
        << "the file that has taken the place is watched";
    EXPECT_TRUE(isTold([&] { fs::remove(first_ / "a.desktop"); }));
    EXPECT_EQ(entries_.find("a"), nullptr);
    EXPECT_TRUE(isTold([&] { fs::remove_all(second_.parent_path()); }));
    EXPECT_EQ(entries_.size(), 0U);
    EXPECT_TRUE(isTold([&] { write(second_ / "c.desktop", "c"); }));
}

TEST_F(DesktopEntriesWatchTest, ReadsWhatHasChangedBeforeIt) {
    write(first_ / "a.desktop", "a");
    const DesktopEntriesWatch watch(loop_, entries_, [this] { ++calls_; });
    EXPECT_EQ(nameOf(entries_, "a"), "a");
    EXPECT_TRUE(isTold([&] { write(first_ / "b.desktop", "b"); }));
}
