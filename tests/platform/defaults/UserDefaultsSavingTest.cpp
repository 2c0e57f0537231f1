#include "platform/defaults/UserDefaults.h"

#include "DefaultsContent.h"
#include "DefaultsFixture.h"
#include "support/ChildProcess.h"
#include "support/ManualClock.h"
#include "support/ScopedVariable.h"
#include "support/WaitUntil.h"

#include <QRegularExpression>

#include <clocale>
#include <csignal>
#include <future>
#include <optional>
#include <random>
#include <sstream>
#include <sys/file.h>
#include <sys/stat.h>

using namespace std::chrono_literals;
using platform::UserDefaults;

namespace fs = std::filesystem;

namespace {

using UserDefaultsSaving = DefaultsFixture;
using Kind = platform::DefaultsError::Kind;
using support::modeOf;
using support::waitUntil;

/// The locale with a comma in numbers, made in a folder of its own since few systems have it.
class CommaLocale {
  public:
    CommaLocale() {
        const std::string name = (folder_.path() / "de_DE.UTF-8").string();
        support::runCommand({"localedef", "-i", "de_DE", "-f", "UTF-8", name});
        isThere_ = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
    }
    ~CommaLocale() { std::setlocale(LC_ALL, "C"); }

    bool isThere() const noexcept { return isThere_; }

  private:
    const support::PrivateFolder folder_;
    const support::ScopedVariable path_{"LOCPATH", folder_.path().string()};
    bool isThere_ = false;
};

/// A file system of a few pages, in a mount namespace of its own. It is reached by way of a process
/// that lives there.
class SmallDisk {
  public:
    explicit SmallDisk(const fs::path& place) : place_(place) {
        isThere_ = waitUntil([this] { return mounts() || !keeper_.isRunning(); }) && mounts();
    }

    bool isThere() const noexcept { return isThere_; }
    fs::path path() const {
        return fs::path("/proc") / std::to_string(keeper_.pid()) / "root" / place_.relative_path();
    }

    void fill() const {
        std::ofstream all(path() / "all", std::ios::binary);
        while (all << 'x' << std::flush) {
        }
    }
    void clear() const { fs::remove(path() / "all"); }

  private:
    bool mounts() const { return keeper_.output().find("mounted") != std::string::npos; }

    const fs::path place_;
    support::ChildProcess keeper_{
        {"unshare", "--user", "--map-root-user", "--mount", "sh", "-c",
         "mount -t tmpfs -o size=64k small \"$0\" && echo mounted && exec sleep 1000",
         place_.string()}};
    bool isThere_ = false;
};

} // namespace

TEST_F(UserDefaultsSaving, HappensWithinASecondOfTheFirstChangeAndOnceForAll) {
    support::ManualClock clock;
    UserDefaults defaults(path_, calls_);
    const unsigned opensBefore = calls_.opens;
    const auto drag = [&](int from) {
        for (int i = from; i < from + 100; ++i) {
            defaults.set("position", i);
            if (i < from + 99)
                clock.advance(4ms); // less than half a second in all
        }
        clock.advance(600ms);
        return waitUntil([&] { return inFile()["position"] == from + 99; });
    };
    ASSERT_TRUE(drag(0));
    EXPECT_EQ(calls_.renames, 1U);
    const unsigned opensOfASave = calls_.opens - opensBefore;
    clock.advance(1h);
    ASSERT_TRUE(drag(1000));
    EXPECT_EQ(calls_.renames, 2U);
    EXPECT_EQ(calls_.opens - opensBefore, 2 * opensOfASave) << "awake without a change";
}

TEST_F(UserDefaultsSaving, DoesNotWaitForTheEndOfALongDrag) {
    support::ManualClock clock;
    UserDefaults defaults(path_, calls_);
    for (int i = 0; i < 125; ++i) {
        defaults.set("position", i);
        clock.advance(8ms);
    }
    EXPECT_TRUE(waitUntil([&] { return calls_.renames > 0; }));
}

TEST_F(UserDefaultsSaving, WithoutAChangeMakesNothing) {
    UserDefaults defaults(path_);
    defaults.registerDefaults({{"key", 1}});
    defaults.remove("unknown");
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_TRUE(fs::is_empty(folder_.path()));
    writeFile({{"key", 5LL}});
    ASSERT_TRUE(defaults.synchronize());
    const auto written = fs::last_write_time(path_);
    defaults.set("key", 5);
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(fs::last_write_time(path_), written);
}

TEST_F(UserDefaultsSaving, MakesPrivateFoldersAndFilesAndKeepsModesThatAreThere) {
    const fs::path deep = folder_.path() / "a" / "b" / "test.plist";
    UserDefaults(deep).set("key", 1);
    EXPECT_EQ(modeOf(deep.parent_path().parent_path()), 0700U);
    EXPECT_EQ(modeOf(deep.parent_path()), 0700U);
    EXPECT_EQ(modeOf(deep), 0600U);
    ::chmod(deep.c_str(), 0640);
    UserDefaults(deep).set("key", 2);
    EXPECT_EQ(modeOf(deep), 0640U);
}

TEST_F(UserDefaultsSaving, FollowsLinksEvenToWhereThereIsNoFileYet) {
    const fs::path real = folder_.path() / "real" / "file";
    fs::create_symlink("second", path_);
    fs::create_symlink("real/file", folder_.path() / "second");
    UserDefaults(path_).set("key", 1);
    UserDefaults(path_).set("other", 2);
    EXPECT_TRUE(fs::is_symlink(path_));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(real)));
    EXPECT_EQ(inFile(), (QVariantMap{{"key", 1LL}, {"other", 2LL}}));

    fs::remove(real);
    fs::create_symlink("../test.plist", real);
    UserDefaults circle(path_);
    circle.set("key", 1);
    EXPECT_FALSE(circle.synchronize());
    EXPECT_EQ(circle.integer("key"), 1);
}

TEST_F(UserDefaultsSaving, KeepsWhatAnotherProgramChangedUnlessItIsOurKey) {
    const QVariantMap unknown{{"data", QByteArray("\0\1", 2)}, {"flag", true}, {"real", 1.0}};
    writeFile({{"ours", 1LL}, {"theirs", 1LL}, {"gone", 1LL}, {"both", 1LL}, {"unset", 1LL}});
    UserDefaults defaults(path_);
    writeFile({{"ours", 1LL}, {"theirs", 2LL}, {"both", 2LL}, {"unset", 2LL}, {"new", unknown}});
    defaults.set("ours", 3);
    defaults.set("both", 3);
    defaults.remove("unset");
    ASSERT_TRUE(defaults.synchronize());
    const QVariantMap expected{{"ours", 3LL}, {"theirs", 2LL}, {"both", 3LL}, {"new", unknown}};
    EXPECT_TRUE(platform::isSameValue(inFile(), expected));
    EXPECT_EQ(defaults.integer("theirs"), 2);
    EXPECT_FALSE(defaults.value("gone").isValid());

    writeFile({{"ours", 4LL}}); // what is saved is no change of ours any more
    defaults.set("other", 1);
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_EQ(inFile(), (QVariantMap{{"ours", 4LL}, {"other", 1LL}}));
    fs::remove(path_);
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_FALSE(defaults.value("ours").isValid());
}

TEST_F(UserDefaultsSaving, TwoProgramsLoseNoKeyOfEachOther) {
    constexpr int keys = 100;
    const auto start = [&](const char* prefix) {
        return std::make_unique<support::ChildProcess>(std::vector<std::string>{
            TONVALE_DEFAULTS_CHILD, "keys", path_.string(), prefix, std::to_string(keys)});
    };
    const auto first = start("a");
    const auto second = start("b");
    EXPECT_EQ(first->wait(), 0) << first->output();
    EXPECT_EQ(second->wait(), 0) << second->output();
    EXPECT_EQ(inFile().size(), 2 * keys);
}

TEST_F(UserDefaultsSaving, IsNotHeldUpByAProgramThatStandsStillWithTheLock) {
    UserDefaults defaults(path_);
    defaults.set("key", 1);
    ASSERT_TRUE(defaults.synchronize());
    const platform::FileDescriptor lock(
        ::open((folder_.path() / ".test.plist.lock").c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(::flock(lock.get(), LOCK_EX), 0);
    defaults.set("key", 2);
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(inFile()["key"], 2);
}

TEST_F(UserDefaultsSaving, MovesADamagedFileAsideAndNeverOverAnother) {
    const std::vector<QByteArray> damages{"", "<plist><array/></plist>", "<plist><dict>",
                                          "garbage"};
    for (const QByteArray& damage : damages) {
        writeBytes(path_, damage);
        UserDefaults defaults(path_);
        EXPECT_FALSE(fs::exists(path_));
        defaults.set("key", 1);
        ASSERT_TRUE(defaults.synchronize());
        EXPECT_EQ(inFile(), (QVariantMap{{"key", 1LL}}));
    }
    const QRegularExpression pattern("^test\\.plist\\.damaged-\\d{8}-\\d{6}(-\\d)?$");
    std::vector<QByteArray> kept;
    for (const std::string& name : filesInFolder()) {
        if (name == path_.filename())
            continue;
        kept.push_back(readBytes(folder_.path() / name));
        EXPECT_TRUE(pattern.match(QString::fromStdString(name)).hasMatch()) << name;
    }
    std::sort(kept.begin(), kept.end());
    EXPECT_EQ(kept, damages);
    ASSERT_EQ(troubles().size(), damages.size());
    EXPECT_EQ(troubles()[0].kind, Kind::lost);
    EXPECT_TRUE(troubles()[0].file.starts_with(path_.string() + ".damaged-"));
    EXPECT_TRUE(troubles()[0].line.ends_with(troubles()[0].file));
}

TEST_F(UserDefaultsSaving, RestoresWhatIsDamagedWhileWeRun) {
    writeFile({{"ours", 1LL}, {"theirs", 2LL}});
    UserDefaults defaults(path_, calls_);
    defaults.set("ours", 3);
    writeBytes(path_, "garbage");
    calls_.renameError = ENOSPC;
    EXPECT_FALSE(defaults.synchronize());
    calls_.renameError = 0;
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_EQ(inFile(), (QVariantMap{{"ours", 3LL}, {"theirs", 2LL}}));
    EXPECT_EQ(filesInFolder().size(), 2U);
    EXPECT_EQ(troubles()[0].kind, Kind::restored);
}

TEST_F(UserDefaultsSaving, NeverReplacesWhatCannotBeRead) {
    for (auto* const error : {&calls_.openError, &calls_.readError}) {
        writeFile({{"theirs", 1LL}});
        *error = error == &calls_.openError ? EACCES : EIO;
        UserDefaults defaults(path_, calls_);
        defaults.set("ours", 2);
        EXPECT_FALSE(defaults.synchronize());
        EXPECT_EQ(inFile(), (QVariantMap{{"theirs", 1LL}}));
        *error = 0;
        EXPECT_TRUE(defaults.synchronize());
        EXPECT_EQ(inFile(), (QVariantMap{{"ours", 2LL}, {"theirs", 1LL}}));
        EXPECT_EQ(defaults.integer("theirs"), 1);
    }
    EXPECT_EQ(troubles().size(), 2U);
    fs::remove(path_);
    fs::create_directory(path_);
    UserDefaults(path_).set("key", 1);
    EXPECT_TRUE(fs::is_directory(path_));
    fs::remove(path_);
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    UserDefaults(path_).set("key", 1);
    EXPECT_TRUE(fs::is_fifo(path_));
}

TEST_F(UserDefaultsSaving, TellsOnceThatItFailsAndAgainOnlyAfterItHasWorked) {
    const fs::path blocker = folder_.path() / "folder";
    const fs::path file = blocker / "test.plist";
    writeBytes(blocker, "a file where the folder should be");
    UserDefaults defaults(file);
    for (int i = 0; i < 3; ++i) {
        defaults.set("key", i);
        EXPECT_FALSE(defaults.synchronize());
        EXPECT_EQ(defaults.integer("key"), i);
    }
    ASSERT_EQ(troubles().size(), 1U);
    EXPECT_EQ(troubles()[0].kind, Kind::unsaved);
    EXPECT_EQ(troubles()[0].file, file);
    EXPECT_NE(troubles()[0].line.find(file.string() + ": Not a directory"), std::string::npos)
        << troubles()[0].line;
    fs::remove(blocker);
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_TRUE(readBytes(file).contains("<integer>2</integer>"));
    EXPECT_EQ(troubles().size(), 1U);
}

TEST_F(UserDefaultsSaving, AFullDiskLeavesTheFormerFileAndIsTriedAgainByItself) {
    support::ManualClock clock;
    writeFile({{"key", 1LL}});
    UserDefaults defaults(path_, calls_);
    for (auto* const error : {&calls_.writeError, &calls_.syncError, &calls_.renameError}) {
        const QVariant value = defaults.integer("key") + 1;
        const QVariantMap former = inFile();
        const std::size_t told = troubles().size();
        *error = ENOSPC;
        defaults.set("key", value);
        clock.advance(1s);
        ASSERT_TRUE(waitUntil([&] { return troubles().size() == told + 1; }));
        EXPECT_EQ(inFile(), former);
        for (int i = 0; i < 3; ++i)
            EXPECT_FALSE(defaults.synchronize());
        EXPECT_EQ(troubles().size(), told + 1);
        EXPECT_EQ(filesInFolder(), std::vector<std::string>{"test.plist"});
        *error = 0;
        clock.advance(2s);
        ASSERT_TRUE(waitUntil([&] { return inFile()["key"] == value; }));
        ASSERT_TRUE(defaults.synchronize());
    }
}

TEST_F(UserDefaultsSaving, WhatWasSetIsInTheFileWithinTwoSecondsOfRoomOnARealDisk) {
    const SmallDisk disk(folder_.path());
    if (!disk.isThere())
        GTEST_SKIP() << "no file system may be mounted here";
    support::ManualClock clock;
    const fs::path file = disk.path() / "config/test.plist";
    UserDefaults defaults(file);
    defaults.set("key", 1);
    ASSERT_TRUE(defaults.synchronize());
    disk.fill();
    for (int value = 2; value < 8; ++value) {
        defaults.set("key", value);
        EXPECT_FALSE(defaults.synchronize());
    }
    ASSERT_EQ(troubles().size(), 1U);
    EXPECT_NE(troubles()[0].line.find("No space left on device"), std::string::npos);
    disk.clear();
    clock.advance(2s);
    EXPECT_TRUE(waitUntil([&] { return readBytes(file).contains("<integer>7</integer>"); }));
}

TEST_F(UserDefaultsSaving, WhoSetsABoundIsNotHeldUpByADiskThatHangs) {
    class HangingCalls : public platform::DefaultsFileCalls {
      public:
        std::promise<void> release;
        int sync(int file) noexcept override {
            released_.wait();
            return DefaultsFileCalls::sync(file);
        }

      private:
        const std::shared_future<void> released_{release.get_future()};
    };
    HangingCalls hanging;
    UserDefaults defaults(path_, hanging);
    defaults.set("key", 1);
    EXPECT_FALSE(defaults.synchronize(5ms));
    ASSERT_EQ(troubles().size(), 1U);
    EXPECT_NE(troubles()[0].line.find("takes too long"), std::string::npos);
    hanging.release.set_value();
    EXPECT_TRUE(defaults.synchronize(support::patience));
    EXPECT_EQ(inFile()["key"], 1);
    calls_.renameError = ENOSPC;
    UserDefaults failing(path_, calls_);
    failing.set("key", 2);
    EXPECT_FALSE(failing.synchronize(support::patience));
}

TEST_F(UserDefaultsSaving, AProgramThatIsKilledLeavesOneOfTheStatesItWrote) {
    constexpr qlonglong saves = 200;
    std::mt19937 random(1); // NOLINT: the same moments each time, as far as that goes
    std::uniform_int_distribution<int> printed(0, 12);
    std::uniform_int_distribution<int> microseconds(0, 3000);
    qlonglong number = 0;
    while (number < saves) {
        support::ChildProcess child({TONVALE_DEFAULTS_CHILD, "numbers", path_.string()});
        const auto lineCount = [&] {
            const std::string output = child.output();
            return std::count(output.begin(), output.end(), '\n');
        };
        const int bound = printed(random);
        ASSERT_TRUE(waitUntil([&] { return lineCount() >= bound; })) << child.output();
        const auto moment =
            std::chrono::steady_clock::now() + std::chrono::microseconds(microseconds(random));
        while (std::chrono::steady_clock::now() < moment) {
        }
        child.stop(SIGKILL);
        std::istringstream lines(child.output());
        qlonglong last = number;
        for (std::string line; std::getline(lines, line);)
            last = std::stoll(line);
        const QVariantMap values = inFile();
        number = values["number"].toLongLong();
        // A save that was told is in the file; the next one may be, half of it may not.
        ASSERT_TRUE(number == last || number == last + 1) << number << " after " << last;
        if (number > 0) {
            ASSERT_EQ(values["text"].toString(), defaultsContent(number)) << number;
        }
    }
    UserDefaults(path_).set("cleared", true);
    EXPECT_EQ(filesInFolder(), std::vector<std::string>{"test.plist"});
}

TEST_F(UserDefaultsSaving, WritesAndReadsNumbersWithAPointInEveryLocale) {
    const CommaLocale locale;
    if (!locale.isThere())
        GTEST_SKIP() << "localedef has no source of de_DE";
    UserDefaults(path_).set("volume", 0.75);
    EXPECT_TRUE(readBytes(path_).contains("<real>0.75</real>"));
    EXPECT_EQ(UserDefaults(path_).number("volume"), 0.75);
}
