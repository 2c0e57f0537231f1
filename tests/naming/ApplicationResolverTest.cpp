#include "naming/ApplicationResolver.h"
#include "naming/DesktopEntries.h"
#include "naming/ProgramFiles.h"
#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

/// One process, whose looks are counted.
class OneProcess final : public ProcessView {
  public:
    std::optional<ProcessRecord> process(pid_t pid) const override {
        ++looks;
        return pid == record.pid ? std::optional(record) : std::nullopt;
    }

    ProcessRecord record;
    mutable int looks = 0;
};

class ApplicationResolverTest : public testing::Test {
  protected:
    ApplicationResolverTest() {
        processes_.record.pid = process;
        processes_.record.startTime = start;
        processes_.record.executable = "/opt/player/player";
        writeEntry("First Name");
        entries_.refresh();
    }

    void writeEntry(const std::string& name) {
        std::ofstream(path_) << "[Desktop Entry]\nType=Application\nName=" << name
                             << "\nExec=/opt/player/player\nIcon=first\n";
    }

    std::string nameOf(const ClientProperties& client = {}) {
        return resolver_.resolve(process, start, client).name;
    }

    static constexpr pid_t process = 4711;
    static constexpr std::uint64_t start = 99;

    const support::PrivateFolder folder_;
    const std::filesystem::path path_ = folder_.path() / "player.desktop";
    struct AllThere final : ProgramFiles {
        bool isExecutable(const std::string&) const override { return true; }
        bool isScript(const std::string&) const override { return false; }
    } files_;
    DesktopEntries entries_{{folder_.path().string()}, {}, files_};
    OneProcess processes_;
    ApplicationResolver resolver_{entries_, processes_};
};

} // namespace

TEST_F(ApplicationResolverTest, LooksAtAProcessOnceWhateverItsClientsSay) {
    EXPECT_EQ(nameOf(), "First Name");
    const int looks = processes_.looks;
    EXPECT_EQ(nameOf(), "First Name");
    EXPECT_EQ(nameOf({.name = "a", .id = "b", .icon = "c", .binary = "d"}), "First Name");
    EXPECT_EQ(processes_.looks, looks);
}

TEST_F(ApplicationResolverTest, LooksAgainWhenTheEntriesHaveChanged) {
    EXPECT_EQ(nameOf(), "First Name");
    writeEntry("Second, Longer Name");
    EXPECT_EQ(nameOf(), "First Name") << "not read yet";
    EXPECT_TRUE(entries_.refresh());
    EXPECT_EQ(nameOf(), "Second, Longer Name");
    std::filesystem::remove(path_);
    EXPECT_TRUE(entries_.refresh());
    EXPECT_EQ(nameOf(), "player");
    EXPECT_FALSE(entries_.refresh());
}

TEST_F(ApplicationResolverTest, LooksAgainWhenAClientChangesItsClaims) {
    processes_.record.executable = "/usr/bin/python3.11";
    EXPECT_EQ(nameOf({.name = "One"}), "One");
    EXPECT_EQ(nameOf({.name = "Two"}), "Two");
    EXPECT_EQ(nameOf({.name = "Two", .id = "player"}), "First Name");
    EXPECT_EQ(nameOf({.name = "Chromium"}), "python3.11");
}

TEST_F(ApplicationResolverTest, TakesALaterProcessOfTheSameNumberForNobody) {
    EXPECT_EQ(nameOf(), "First Name");
    processes_.record.startTime = start + 1;
    processes_.record.executable = "/opt/other/other";
    EXPECT_EQ(resolver_.resolve(process, start + 1).name, "other");
    const ApplicationIdentity gone = resolver_.resolve(process, start, {.name = "It Was"});
    EXPECT_EQ(gone.name, "It Was");
    EXPECT_EQ(gone.mainProcess, 0);
    EXPECT_EQ(gone.evidence, NameEvidence::clientName);
}

TEST_F(ApplicationResolverTest, AsksAgainAboutAProcessThatItHasForgotten) {
    EXPECT_EQ(nameOf(), "First Name");
    processes_.record.executable = "/opt/other/other"; // it runs another program now
    EXPECT_EQ(nameOf(), "First Name");
    resolver_.forget(process);
    EXPECT_EQ(nameOf(), "other");
}
