#include "app/InstalledPlugin.h"

#include "platform/defaults/UserDefaults.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QStringList>
#include <QTimer>

#include <utility>

using platform::UserService;

namespace {

const UserService::State noManager;
const UserService::State notFound{false, "not-found", "inactive"};
const UserService::State loaded{true, "loaded", "inactive"};
const UserService::State masked{true, "masked", "inactive"};
const UserService::State outdated{true, "loaded", "inactive", true};

class InstalledPluginTest : public testing::Test {
  protected:
    /// What it does at a launch.
    QStringList run(const UserService::State& state, bool isRunning, bool isReplaced) {
        state_ = state;
        isRunning_ = isRunning;
        plugin_.run(isReplaced);
        return std::exchange(calls_, {});
    }

    UserService::State state_;
    bool isRunning_ = false;
    bool isInstalled_ = true;
    bool canAddItem_ = true;
    QString error_;
    QStringList calls_;
    platform::UserDefaults defaults_{{}};
    InstalledPlugin plugin_{{[this](auto answer) { answer(state_); },
                             [this](const QString& unit, auto answer) {
                                 calls_ += "enable " + unit;
                                 answer(error_);
                             },
                             [this](auto answer) {
                                 calls_ += "reload";
                                 answer(error_);
                             },
                             [this](auto answer) {
                                 calls_ += "remove";
                                 QTimer::singleShot(0, qApp, [=, this] { answer(error_); });
                             },
                             [this](bool exists) {
                                 calls_ += exists ? "add item" : "remove item";
                                 return canAddItem_;
                             },
                             [this] { return isInstalled_; }, [this] { return isRunning_; },
                             [this] {
                                 calls_ += "end";
                                 isRunning_ = false;
                             },
                             [this] { calls_ += "start"; }},
                            "/Library/Tonvale.plugin",
                            defaults_};
};

const QString enable = "enable /Library/Tonvale.plugin/Contents/Resources/tonvale-plugin.service";

} // namespace

TEST_F(InstalledPluginTest, IsSetUpOnceAndStartedAtEachLaunch) {
    struct Case {
        const char* what;
        UserService::State state;
        QString setUp;
    };
    for (const Case& each :
         {Case{"a service", notFound, enable}, Case{"no manager", noManager, "add item"}}) {
        SCOPED_TRACE(each.what);
        EXPECT_EQ(run(each.state, false, true), (QStringList{"end", each.setUp, "start"}));
        EXPECT_EQ(run(each.state, true, false), QStringList()) << "it runs";
        EXPECT_EQ(run(each.state, false, false), QStringList("start"))
            << "what the user has switched off stays so";
        EXPECT_EQ(run(each.state, true, true), (QStringList{"end", "start"})) << "replaced";
        plugin_.remove();
        EXPECT_EQ(std::exchange(calls_, {}), (QStringList{"remove", "remove item", "end"}));
    }
}

TEST_F(InstalledPluginTest, LeavesAServiceThatIsThereAsItIs) {
    EXPECT_EQ(run(loaded, false, false), QStringList("start"));
    EXPECT_EQ(run(outdated, false, true), (QStringList{"end", "reload", "start"}));
}

TEST_F(InstalledPluginTest, StaysOffAsAMaskedService) {
    EXPECT_EQ(run(masked, false, false), QStringList());
    EXPECT_EQ(run(notFound, false, false), (QStringList{enable, "start"})) << "not masked any more";
}

TEST_F(InstalledPluginTest, IsStartedAllTheSameIfTheServiceIsRefused) {
    error_ = "No space left";
    for (int launch = 0; launch < 2; ++launch)
        EXPECT_EQ(run(notFound, false, false), (QStringList{enable, "start"})) << "tried again";
}

TEST_F(InstalledPluginTest, IsSetUpLaterIfThatFailsOrThereIsNothingToStart) {
    isInstalled_ = false;
    EXPECT_EQ(run(noManager, false, false), QStringList());
    isInstalled_ = true;
    canAddItem_ = false;
    EXPECT_EQ(run(noManager, false, false), (QStringList{"add item", "start"}));
    canAddItem_ = true;
    EXPECT_EQ(run(noManager, false, false), (QStringList{"add item", "start"}));
    EXPECT_EQ(run(noManager, false, false), QStringList("start"));
}
