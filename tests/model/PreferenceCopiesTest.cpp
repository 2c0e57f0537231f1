#include "model/PreferenceCopies.h"

#include "platform/defaults/PropertyList.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "support/FailingSharedFolderCalls.h"
#include "support/ManualClock.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/SystemLogRecorder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QByteArray>

#include <atomic>
#include <fstream>
#include <future>
#include <iterator>
#include <sys/stat.h>

using namespace std::chrono_literals;
using platform::UserDefaults;
using support::waitUntil;

namespace fs = std::filesystem;

namespace {

class PreferenceCopiesTest : public testing::Test {
  protected:
    PreferenceCopiesTest() {
        fs::create_directory(one_);
        fs::create_directory(two_);
    }

    static std::string bytesOf(const fs::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static qlonglong valueIn(const fs::path& folder) {
        const auto root =
            platform::parsePropertyList(QByteArray::fromStdString(bytesOf(folder / name)));
        return root ? root->toMap().value("key", -1).toLongLong() : -2;
    }
    static mode_t modeOf(const fs::path& file) {
        struct stat status {};
        return ::stat(file.c_str(), &status) == 0 ? status.st_mode & ALLPERMS : 0;
    }

    /// Sets a value and returns when it has been copied, or that has failed.
    void save(int value) {
        defaults_.set("key", value);
        bool isDone = false;
        copies_.saveNow([&] { isDone = true; });
        EXPECT_FALSE(isDone) << "never from within";
        EXPECT_TRUE(waitUntil([&] { return isDone; }));
    }

    std::size_t lines() const { return log_.lines().size(); }

    static constexpr const char* name = "test.plist";

    support::ManualClock clock_;
    support::SystemLogRecorder log_;
    platform::RunLoop loop_;
    platform::MainQueueService mainQueue_{loop_};
    const support::PrivateFolder folder_;
    const fs::path one_ = folder_.path() / "one";
    const fs::path two_ = folder_.path() / "two";
    const fs::path source_ = folder_.path() / "own" / name;
    std::atomic<int> saves_ = 0;
    support::FailingSharedFolderCalls calls_;
    UserDefaults defaults_{source_};
    PreferenceCopies copies_{defaults_, source_,
                             [this] {
                                 ++saves_;
                                 return std::vector<std::string>{one_, two_};
                             },
                             calls_};
};

} // namespace

TEST_F(PreferenceCopiesTest, EveryFolderGetsAHiddenCopyAndTheOwnFileStaysPrivate) {
    save(1);
    for (const fs::path& folder : {one_, two_}) {
        EXPECT_EQ(bytesOf(folder / name), bytesOf(source_));
        EXPECT_EQ(modeOf(folder / name), 0744U);
        EXPECT_EQ(bytesOf(folder / ".hidden"), "test.plist\n");
    }
    EXPECT_EQ(modeOf(source_), 0600U);
    EXPECT_EQ(valueIn(one_), 1);
    EXPECT_EQ(lines(), 0U);
}

TEST_F(PreferenceCopiesTest, DuringADragTheyFollowEvery100Milliseconds) {
    const auto drag = [&](int value) {
        defaults_.set("key", value);
        copies_.mark();
    };
    drag(0);
    ASSERT_TRUE(waitUntil([&] { return valueIn(two_) == 0; }));
    for (int window = 1; window <= 10; ++window) {
        for (int step = 1; step <= 10; ++step) {
            drag(10 * window + step);
            clock_.advance(10ms);
        }
        ASSERT_TRUE(waitUntil([&] { return valueIn(two_) == 10 * window + 10; })) << window;
        EXPECT_EQ(saves_, 1 + window);
    }
}

TEST_F(PreferenceCopiesTest, WhatIsAskedForAtOnceDoesNotWait) {
    save(1);
    save(2);
    EXPECT_EQ(valueIn(one_), 2);
    defaults_.set("key", 3);
    copies_.mark();
    save(4);
    EXPECT_EQ(valueIn(two_), 4);
    const int saves = saves_;
    clock_.advance(1s);
    save(5);
    EXPECT_EQ(saves_, saves + 1) << "nothing was left to be done";
    defaults_.set("key", 6);
    EXPECT_TRUE(copies_.finish());
    EXPECT_EQ(valueIn(two_), 6);
}

TEST_F(PreferenceCopiesTest, FailuresAreLoggedOnceForATargetAndErrorUntilItWorksAgain) {
    const std::string target = one_ / name;
    const std::string other = two_ / name;
    const std::string copying = "Couldn't copy " + source_.string() + " to ";
    calls_.createError = EACCES;
    save(1);
    save(2);
    EXPECT_TRUE(log_.contains(copying + target));
    EXPECT_TRUE(log_.contains(copying + other));
    EXPECT_EQ(lines(), 2U);
    calls_.createError = ENOSPC;
    save(3);
    EXPECT_EQ(log_.count(copying), 4U) << "another error";
    calls_.createError = EACCES;
    save(3);
    EXPECT_EQ(log_.count(copying), 4U) << "the first one again";
    calls_.createError = 0;
    save(4);
    EXPECT_EQ(lines(), 4U);
    EXPECT_EQ(valueIn(one_), 4);

    log_.clear();
    calls_.createError = EACCES;
    fs::remove(other);
    save(5);
    EXPECT_TRUE(log_.contains("Couldn't remove path: " + target)) << "nor could a new one be made";
    EXPECT_TRUE(log_.contains(copying + other));
    EXPECT_EQ(lines(), 2U);
    EXPECT_EQ(valueIn(one_), 4) << "it stays";

    log_.clear();
    calls_.createError = 0;
    calls_.modeError = EPERM;
    save(6);
    save(7);
    EXPECT_EQ(log_.count("Couldn't set attrs on path: "), 2U);
    EXPECT_TRUE(log_.contains("Couldn't set attrs on path: " + target));
    EXPECT_EQ(lines(), 2U);
    EXPECT_EQ(valueIn(one_), 7);
}

TEST_F(PreferenceCopiesTest, AFolderThatFailsDoesNotHinderOthers) {
    fs::create_directories(one_ / name / "precious");
    save(1);
    EXPECT_EQ(valueIn(two_), 1);
    EXPECT_TRUE(log_.contains("Couldn't remove path: " + (one_ / name).string()));
    EXPECT_TRUE(fs::exists(one_ / name / "precious"));
    fs::remove_all(one_);
    save(2);
    EXPECT_EQ(valueIn(two_), 2);
    EXPECT_TRUE(
        log_.contains("Couldn't copy " + source_.string() + " to " + (one_ / name).string()));
}

TEST_F(PreferenceCopiesTest, TheNameOfAFolderDoesNotTurnTheLine) {
    const fs::path odd = folder_.path() / "x\u202ey";
    defaults_.set("key", 1);
    PreferenceCopies copies(defaults_, source_, [&] { return std::vector<std::string>{odd}; });
    EXPECT_TRUE(copies.finish());
    EXPECT_TRUE(log_.contains("x\\u202ey/test.plist"));
}

TEST_F(PreferenceCopiesTest, WithoutAFileThereIsNothingToCopy) {
    bool isDone = false;
    copies_.saveNow([&] { isDone = true; });
    ASSERT_TRUE(waitUntil([&] { return isDone; }));
    EXPECT_EQ(log_.count("Couldn't copy " + source_.string()), 2U);
    EXPECT_TRUE(fs::is_empty(one_));
}

TEST_F(PreferenceCopiesTest, AFullDiskIsTriedAgainEverySecondAndOtherCopiesAreLeftAlone) {
    calls_.createError = ENOSPC;
    calls_.failingFolder = two_;
    for (int value = 1; value < 6; ++value)
        save(value);
    EXPECT_EQ(valueIn(one_), 5);
    EXPECT_FALSE(fs::exists(two_ / name));
    const unsigned renames = calls_.renames;
    const int saves = saves_;
    clock_.advance(2s);
    ASSERT_TRUE(waitUntil([&] { return saves_ == saves + 1; }));
    calls_.createError = 0;
    EXPECT_TRUE(waitUntil([&] {
        clock_.advance(2s); // twice, when that comes before the retry has ended
        return valueIn(two_) == 5;
    }));
    EXPECT_LE(saves_, saves + 3);
    EXPECT_EQ(calls_.renames, renames + 2) << "the copy and the list of hidden files";
    EXPECT_EQ(lines(), 1U);
}

TEST_F(PreferenceCopiesTest, AHangingDiskDelaysNoOther) {
    std::promise<void> release;
    const std::shared_future<void> released(release.get_future());
    UserDefaults defaults(folder_.path() / "other");
    {
        PreferenceCopies hanging(defaults, folder_.path() / "other", [released] {
            released.wait();
            return std::vector<std::string>();
        });
        defaults.set("key", 1);
        hanging.mark();
        hanging.saveNow();
        EXPECT_FALSE(hanging.finish(5ms));
        save(1);
        EXPECT_EQ(valueIn(one_), 1);
    }
    release.set_value();
    support::serveEvents();
}

TEST_F(PreferenceCopiesTest, CopiesGoToTheSharedFolderIfThereIsOneThenToTheContainers) {
    const support::ScopedVariable library("TONVALE_LOCAL_LIBRARY", folder_.path() / "library");
    const support::ScopedVariable home("HOME", folder_.path() / "home");
    const fs::path containers = folder_.path() / "home/Library/Containers";
    const PreferenceCopies::Folders folders = PreferenceCopies::standardFolders();
    EXPECT_TRUE(folders().empty());
    fs::create_directories(containers / "b/Data");
    fs::create_directories(containers / "a/Data");
    fs::create_directories(containers / "incomplete");
    EXPECT_EQ(folders(), (std::vector<std::string>{containers / "a/Data", containers / "b/Data"}));
    fs::create_directories(folder_.path() / "library/Shared");
    EXPECT_EQ(folders().front(), folder_.path() / "library/Shared");
    EXPECT_EQ(folders().size(), 3U);
}
