#include "plugin/memory/PreferencesFile.h"
#include "plugin/memory/PreferencesWatch.h"

#include "platform/loop/MainQueue.h"
#include "platform/plist/PropertyListNode.h"
#include "support/PrivateFolder.h"
#include "support/SystemLogRecorder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

using support::waitUntil;

namespace {

std::string plist(const std::string& content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>" + content +
           "</dict></plist>";
}

std::string app(const std::string& name, const std::string& content) {
    return "<key>" + name + "</key><dict>" + content + "</dict>";
}

std::string playerAt(int percent) {
    return plist("<key>Apps</key><dict>" +
                 app("player", "<key>Volume</key><real>" + std::to_string(percent) + "</real>") +
                 "</dict>");
}

void write(const fs::path& file, const std::string& content) {
    std::ofstream(file, std::ios::binary) << content;
}

void replace(const fs::path& file, const std::string& content) {
    write(file.string() + ".new", content);
    fs::rename(file.string() + ".new", file);
}

/// 0 where nothing could be read.
int percentIn(const std::optional<Preferences>& preferences) {
    if (!preferences)
        return 0;
    const auto found = preferences->programs.find("player");
    return found != preferences->programs.end() ? found->second.percent : 100;
}

class PreferencesFileTest : public testing::Test {
  protected:
    const support::PrivateFolder folder_;
    const fs::path own_ = folder_.path() / "config" / "own.plist";
    const fs::path copy_ = folder_.path() / "Shared" / "copy.plist";

    PreferencesFileTest() {
        fs::create_directory(own_.parent_path());
        fs::create_directory(copy_.parent_path());
    }
};

class PreferencesWatchTest : public PreferencesFileTest {
  protected:
    std::vector<int> told_;
    std::optional<PreferencesWatch> watch_;

    void TearDown() override { platform::drainMainQueue(); }

    std::optional<Preferences> begin() {
        watch_.emplace(PreferencesFile(own_, copy_), [this](const Preferences& preferences) {
            told_.push_back(percentIn(preferences));
        });
        return watch_->first();
    }

    bool tells(int percent) {
        return waitUntil([&] {
            platform::drainMainQueue();
            return !told_.empty() && told_.back() == percent;
        });
    }
};

} // namespace

TEST(Preferences, TheLanguageIsATextOrNotSaid) {
    const auto languageIn = [](const char* value) {
        const auto preferences =
            parsePreferences(plist(std::string("<key>MessageLanguage</key>") + value));
        return preferences ? preferences->language : "damaged";
    };
    EXPECT_EQ(languageIn("<string>de_DE</string>"), "de_DE");
    EXPECT_EQ(languageIn("<string/>"), "");
    EXPECT_EQ(languageIn("<integer>3</integer>"), "");
    EXPECT_EQ(parsePreferences(plist(""))->language, "");
}

TEST(Preferences, NewProgramsHaveTheirVolumeAndSeenOnesHaveNot) {
    const std::string seen = "<key>SeenApps</key><array><string>a</string><integer>3</integer>"
                             "<string>Sound Effects</string></array>";
    const auto preferences =
        parsePreferences(plist(seen + "<key>NewAppVolume</key><integer>30</integer>"));
    ASSERT_TRUE(preferences);
    EXPECT_EQ(preferences->settingOfUnset("a"), ProgramSetting{});
    EXPECT_EQ(preferences->settingOfUnset("b"), (ProgramSetting{30, false}));
    for (const char* const none :
         {"", "<key>NewAppVolume</key><string>30</string>", "<key>NewAppVolume</key><array/>"})
        EXPECT_EQ(parsePreferences(plist(none))->settingOfUnset("b"), ProgramSetting{}) << none;
    EXPECT_EQ(parsePreferences(plist("<key>NewAppVolume</key><real>-7</real>"))->forNew, 0);
}

TEST(Preferences, NamesAreFoundAsTheApplicationKeepsThem) {
    EXPECT_EQ(settingsKey("coreaudiod"), "Sound Effects");
    EXPECT_EQ(settingsKey("Rock & Röll\n"), "Rock & Röll\n");
    EXPECT_EQ(settingsKey("a\x01z\xEF\xBF\xBF"), "a\xEF\xBF\xBDz\xEF\xBF\xBD");
    const auto preferences = parsePreferences(
        plist("<key>Apps</key><dict>" + app("Rock &amp; R\xC3\xB6ll", "<key>Mute</key><true/>") +
              "</dict><key>CustomIgnoredApps</key><array><string>K\xC3\xB6nig</string>"
              "<string>a\xEF\xBF\xBDz</string><integer>3</integer></"
              "array><key>DisabledBuiltInIgnoredApps</key><array>"
              "<string>Finder</string><string>dock</string></array>"));
    ASSERT_TRUE(preferences);
    EXPECT_EQ(preferences->programs.count(settingsKey("Rock & Röll")), 1U);
    for (const char* const name : {"KÖNIG", "könig", "Dock", "xcode", "a\x01z"})
        EXPECT_TRUE(preferences->ignored.contains(name)) << name;
    for (const char* const name : {"Finder", "finder", "Kö", "3", ""})
        EXPECT_FALSE(preferences->ignored.contains(name)) << name;
}

TEST_F(PreferencesFileTest, TheOwnFileComesBeforeTheCopy) {
    PreferencesFile file(own_, copy_);
    EXPECT_EQ(file.read(), Preferences{}) << "nothing is set";
    write(copy_, playerAt(30));
    EXPECT_EQ(percentIn(file.read()), 30);
    write(own_, playerAt(40));
    EXPECT_EQ(percentIn(file.read()), 40);
    fs::remove(own_);
    fs::create_symlink(folder_.path() / "elsewhere.plist", own_);
    write(folder_.path() / "elsewhere.plist", playerAt(50));
    EXPECT_EQ(percentIn(file.read()), 50) << "links of one's own are followed";
    const std::string named = folder_.path() / "named.plist";
    file.setOwn(named);
    write(named, playerAt(60));
    EXPECT_EQ(percentIn(file.read()), 60) << "the one that the application keeps";
    fs::remove(named);
    EXPECT_EQ(percentIn(file.read()), 50) << "as long as it is there";
}

TEST_F(PreferencesFileTest, WhatWasReadLastHoldsWhileThereIsNothingToRead) {
    const std::string good = playerAt(40);
    struct Case {
        std::function<void()> happen;
        const char* reason; // none when nothing is wrong
    };
    const std::vector<Case> cases{
        {[&] { write(own_, good.substr(0, good.size() / 2)); }, "it is damaged"},
        {[&] { write(own_, ""); }, "it is damaged"},
        {[&] { write(own_, "<plist version=\"1.0\"><array/></plist>"); }, "it is damaged"},
        {[&] {
             write(own_, good);
             fs::resize_file(own_, platform::propertyListBytes + 1);
         },
         "it is too large"},
        {[&] { fs::create_directory(own_); }, "it is not a regular file"},
        {[&] { ASSERT_EQ(::mkfifo(own_.c_str(), 0600), 0); }, "it is not a regular file"},
        {[&] { fs::create_symlink(own_, own_); }, "Too many levels of symbolic links"},
        {[] {}, nullptr}};
    PreferencesFile file(own_, copy_);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(i);
        const auto& [happen, reason] = cases[i];
        support::SystemLogRecorder log;
        write(own_, good);
        EXPECT_EQ(percentIn(file.read()), 40);
        fs::remove(own_);
        happen();
        EXPECT_EQ(percentIn(file.read()), 40);
        EXPECT_EQ(percentIn(file.read()), 40);
        EXPECT_EQ(log.count("Couldn't read the preferences"), reason != nullptr ? 1U : 0U);
        EXPECT_EQ(log.count(reason != nullptr ? reason : "preferences"),
                  reason != nullptr ? 1U : 0U);
        PreferencesFile fresh(own_, copy_);
        EXPECT_EQ(percentIn(fresh.read()), reason != nullptr ? 0 : 100)
            << "it has never read anything";
        write(copy_, playerAt(30));
        EXPECT_EQ(percentIn(fresh.read()), 30) << "better than nothing";
        fs::remove(copy_);
        fs::remove(own_);
    }
}

TEST_F(PreferencesFileTest, ACopyOfAnotherUserIsNotRead) {
    PreferencesFile file("", copy_);
    write(folder_.path() / "other.plist", playerAt(30));
    fs::create_symlink(folder_.path() / "other.plist", copy_);
    EXPECT_EQ(percentIn(file.read()), 100) << "a link may lead anywhere";
    fs::remove(copy_);
    write(copy_, playerAt(30));
    if (::geteuid() == 0) { // nobody else can give files away
        ASSERT_EQ(::chown(copy_.c_str(), 65534, 65534), 0);
        EXPECT_EQ(percentIn(file.read()), 100);
        ASSERT_EQ(::chown(copy_.c_str(), ::geteuid(), 65534), 0);
    }
    EXPECT_EQ(percentIn(file.read()), 30);
}

TEST_F(PreferencesWatchTest, EveryWayToChangeAFileIsSeen) {
    write(own_, playerAt(10));
    EXPECT_EQ(percentIn(begin()), 10);
    const fs::path moved = folder_.path() / "moved";
    const std::vector<std::pair<const char*, std::function<void(const std::string&)>>> ways{
        {"replaced", [this](const std::string& content) { replace(own_, content); }},
        {"again", [this](const std::string& content) { replace(own_, content); }},
        {"in place", [this](const std::string& content) { write(own_, content); }},
        {"a copy instead",
         [this](const std::string& content) {
             replace(copy_, content);
             fs::remove(own_);
         }},
        {"it is there again", [this](const std::string& content) { write(own_, content); }},
        {"a new folder",
         [&](const std::string& content) {
             fs::remove_all(copy_.parent_path()); // first, or it might be read in between
             fs::rename(own_.parent_path(), moved);
             fs::create_directory(own_.parent_path());
             write(own_, content);
         }},
        {"a folder further up",
         [&](const std::string& content) {
             fs::remove_all(own_.parent_path());
             fs::create_directory(copy_.parent_path());
             replace(copy_, content);
         }},
        {"a link",
         [&](const std::string& content) {
             fs::create_directory(own_.parent_path());
             write(moved / "target.plist", content);
             fs::create_symlink(moved / "target.plist", own_);
         }},
        {"where the link leads",
         [&](const std::string& content) { replace(moved / "target.plist", content); }}};
    int percent = 10;
    for (const auto& [what, change] : ways) {
        change(playerAt(++percent));
        EXPECT_TRUE(tells(percent)) << what;
    }
    write(moved / "target.plist", "damaged");
    replace(own_, playerAt(percent)); // nothing new
    replace(own_, playerAt(70));
    EXPECT_TRUE(tells(70));
    EXPECT_EQ(told_.size(), ways.size() + 1) << "each once, the damaged one not at all";
}

TEST_F(PreferencesWatchTest, ItMayBeAskedAndIsSilentAfterItsEnd) {
    EXPECT_EQ(begin(), Preferences{});
    watch_->readAgain();
    write(own_, playerAt(20));
    watch_->readAgain();
    EXPECT_TRUE(tells(20));
    replace(own_, playerAt(30));
    watch_->readAgain();
    (void)watch_->first(); // which comes after that
    watch_.reset();
    platform::drainMainQueue();
    EXPECT_EQ(told_, std::vector{20});
}
