#include "install/HelperInstallation.h"

#include "install/MVInstallerController.h"
#include "install/RunningHelpers.h"
#include "platform/files/DirectoryComparison.h"
#include "support/ChildProcess.h"
#include "support/Files.h"
#include "support/PrivateFolder.h"
#include "support/SystemLogRecorder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/file.h>
#include <unistd.h>

namespace fs = std::filesystem;
using support::ChildProcess;

namespace {

/// Real bundles and processes. The helper is a copy of sleep, under a name and an identifier that
/// no other process has.
class HelperInstallationTest : public testing::Test {
  protected:
    HelperInstallationTest() { makeBundle(source_); }

    void makeBundle(const fs::path& bundle) const {
        fs::create_directories(bundle / "Contents/Linux");
        fs::create_directories(bundle / "Contents/Resources/icons");
        std::ofstream(bundle / "Contents/Info.plist")
            << "<plist><dict><key>CFBundleIdentifier</key><string>" << identifier_
            << "</string><key>CFBundleName</key><string>" << name_
            << "</string><key>CFBundleExecutable</key><string>" << name_
            << "</string></dict></plist>";
        fs::copy_file("/bin/sleep", program(bundle));
    }

    fs::path program(const fs::path& bundle) const { return bundle / "Contents/Linux" / name_; }

    static bool ended(ChildProcess& process) { return process.wait() == 128 + SIGTERM; }

    bool isSame() const {
        return platform::isDirectoryEqualToDirectory(source_, destination_) &&
               support::modeOf(program(source_)) == support::modeOf(program(destination_));
    }

    const support::PrivateFolder folder_;
    support::SystemLogRecorder log_;
    const std::string name_ = "THelper" + std::to_string(::getpid());
    const std::string identifier_ = "org.example." + name_;
    const fs::path source_ = folder_.path() / "Tonvale.app/Contents/Helpers" / (name_ + ".app");
    const fs::path destination_ = folder_.path() / "data/Tonvale" / (name_ + ".app");
    const fs::path entry_ = folder_.path() / "autostart" / (identifier_ + ".desktop");
    bool isWanted_ = true;
    std::string launched_;
    QString launchError_;
    HelperInstallation helper_{
        {.source = QString::fromStdString(source_),
         .destination = QString::fromStdString(destination_),
         .identifier = identifier_,
         .name = QString::fromStdString(name_),
         .loginItems = platform::LoginItems({.own = folder_.path() / "autostart"}, "/bin/sh"),
         .isWanted = [this] { return isWanted_; },
         .killProcess = &MVInstallerController::killProcess,
         .launch =
             [this](const QString& program, const HelperInstallation::Launched& launched) {
                 launched_ = program.toStdString();
                 launched(launchError_);
             }}};
};

} // namespace

TEST_F(HelperInstallationTest, CopiesWhatIsMissingOrDifferentAndLaunchesInAnyCase) {
    struct Case {
        const char* what;
        std::function<void()> change;
        const char* line;
    };
    const fs::path file = destination_ / "Contents/Info.plist";
    const fs::path stage = // of a program that was killed
        destination_.parent_path() / ("." + destination_.filename().string() + ".Abc123");
    fs::create_directories(stage / destination_.filename());
    for (const Case& each :
         {Case{"none", [] {}, "Helper not found. Installing."}, Case{"same", [] {}, nullptr},
          Case{"one byte", [&] { std::ofstream(file, std::ios::app) << ' '; },
               "Existing helper doesn't match. Installing."},
          Case{"without its entry", [&] { fs::remove(entry_); }, nullptr},
          Case{"with that of an application elsewhere",
               [&] {
                   std::ofstream(entry_)
                       << "[Desktop Entry]\nName=" << name_ << "\nExec=x\nTryExec=/gone\n";
               },
               nullptr},
          Case{"a file in its place",
               [&] {
                   fs::remove_all(destination_);
                   std::ofstream(destination_) << "file";
               },
               "Existing helper doesn't match. Installing."},
          Case{"a link to nowhere",
               [&] {
                   fs::remove_all(destination_);
                   fs::create_symlink("nowhere", destination_);
               },
               "Existing helper doesn't match. Installing."}}) {
        each.change();
        launched_.clear();
        helper_.showHelperInMenuBar(true);
        EXPECT_TRUE(isSame()) << each.what;
        EXPECT_EQ(launched_, program(destination_)) << each.what;
        EXPECT_NE(support::contentOf(entry_).find("TryExec=/bin/sh\n"), std::string::npos)
            << each.what;
        const auto lines = log_.lines();
        EXPECT_EQ(lines.size(), each.line != nullptr ? 1U : 0U) << each.what;
        if (each.line != nullptr && !lines.empty()) {
            EXPECT_EQ(lines[0].text, each.line);
        }
        log_.clear();
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(destination_.parent_path()), {}), 1)
        << "nothing else is left there";
    fs::create_directory(stage);
    const platform::FileDescriptor atWork(::open(stage.c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(atWork.get(), LOCK_EX), 0);
    fs::remove_all(destination_);
    helper_.showHelperInMenuBar(true);
    EXPECT_TRUE(isSame() && fs::exists(stage)) << "of a program that copies just now";
}

TEST_F(HelperInstallationTest, EndsAndRemovesWhatIsNotWanted) {
    helper_.showHelperInMenuBar(true);
    ChildProcess running({program(destination_), "60"});
    isWanted_ = false;
    helper_.adjustHelperIfNecessary();
    EXPECT_TRUE(ended(running));
    EXPECT_FALSE(fs::exists(destination_));
    EXPECT_FALSE(fs::exists(entry_));
    EXPECT_EQ(runningHelpers(identifier_, destination_.filename()).size(), 0U);
    helper_.uninstallHelper();
    EXPECT_EQ(log_.lines().size(), 1U) << "of the installation";
}

TEST_F(HelperInstallationTest, LeavesOneThatRunsFromItsPlace) {
    helper_.showHelperInMenuBar(true);
    ChildProcess running({program(destination_), "60"});
    launched_.clear();
    helper_.adjustHelperIfNecessary();
    EXPECT_TRUE(running.isRunning());
    EXPECT_EQ(launched_, program(destination_)) << "which changes nothing";
    EXPECT_FALSE(log_.contains("match"));
}

TEST_F(HelperInstallationTest, ReplacesThoseThatRunTwiceOrFromElsewhere) {
    const fs::path other = folder_.path() / "older" / (name_ + ".app");
    makeBundle(other);
    const char* const twice =
        "Multiple instances of helper found. Terminating all and reinstalling.";
    const char* const elsewhere = "Helper app doesn't match. Reinstalling.";
    struct Case {
        const char* what;
        std::vector<fs::path> bundles;
        std::function<void()> then;
        const char* line;
    };
    for (const Case& each :
         {Case{"two", {destination_, destination_}, [] {}, twice},
          Case{"two places", {destination_, other}, [] {}, twice},
          Case{"another place", {other}, [] {}, elsewhere},
          Case{"replaced",
               {destination_},
               [&] {
                   fs::remove(program(destination_));
                   fs::copy_file("/bin/sleep", program(destination_));
               },
               elsewhere},
          Case{"deleted", {destination_}, [&] { fs::remove_all(destination_); }, elsewhere}}) {
        helper_.showHelperInMenuBar(true);
        std::vector<std::unique_ptr<ChildProcess>> running;
        for (const fs::path& bundle : each.bundles)
            running.push_back(
                std::make_unique<ChildProcess>(std::vector<std::string>{program(bundle), "60"}));
        each.then();
        log_.clear();
        launched_.clear();
        helper_.adjustHelperIfNecessary();
        for (const auto& process : running)
            EXPECT_TRUE(ended(*process)) << each.what;
        ASSERT_FALSE(log_.lines().empty());
        EXPECT_EQ(log_.lines()[0].text, each.line) << each.what;
        EXPECT_TRUE(isSame()) << each.what;
        EXPECT_EQ(launched_, program(destination_)) << each.what;
    }
}

TEST_F(HelperInstallationTest, LogsEachFailureAndGoesOn) {
    fs::remove_all(source_);
    launchError_ = "no such program";
    helper_.showHelperInMenuBar(true);
    for (const std::string& line :
         {std::string("Failed to copy helper: "), std::string("Failed to launch helper: no such"),
          "Couldn't add " + name_ + " to login items"})
        EXPECT_EQ(log_.count(line), 1U) << line;
    EXPECT_FALSE(fs::exists(destination_));
}

TEST_F(HelperInstallationTest, AnEntryThatWasSwitchedOffSurvivesAnUpdate) {
    helper_.showHelperInMenuBar(true);
    std::ofstream(entry_, std::ios::app) << "Hidden=true\n";
    const std::string text = support::contentOf(entry_);
    std::ofstream(source_ / "Contents/Info.plist", std::ios::app) << ' ';
    helper_.adjustHelperIfNecessary();
    EXPECT_TRUE(isSame());
    EXPECT_EQ(support::contentOf(entry_), text);
}
