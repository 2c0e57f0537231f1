#include "app/PluginHealth.h"

#include "app/PluginStarter.h"
#include "platform/loop/RunLoop.h"
#include "support/ManualClock.h"
#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QStringList>

#include <utility>
#include <vector>

using platform::UserService;
using Problem = PluginHealth::Problem;
using namespace std::chrono_literals;

namespace {

const UserService::State notInstalled;
const UserService::State stopped{true, "loaded", "inactive"};
const UserService::State starting{true, "loaded", "activating"};

/// A watch in a system that a test makes. Time passes as the test says.
class PluginHealthTest : public testing::Test {
  protected:
    void pass(std::chrono::milliseconds time) {
        constexpr std::chrono::milliseconds step{100};
        for (; time > 0ms; time -= step) {
            clock_.advance(step);
            loop_.turn();
        }
    }

    void set(bool isConnected, bool isOnTheBus) {
        isConnected_ = isConnected;
        isOnTheBus_ = isOnTheBus;
        watch_.changed();
        loop_.turn();
    }

    std::vector<Problem> takeShown() { return std::exchange(shown_, {}); }

    QString description() {
        QString text;
        starter_.describe([&](const QString& described) { text = described; });
        return text;
    }

    using Shown = std::vector<Problem>;

    support::ManualClock clock_;
    const support::PrivateFolder folder_;
    const QString program_ = QString::fromStdString(folder_.path() / "plug-in");
    platform::RunLoop loop_;
    bool isConnected_ = false;
    bool isOnTheBus_ = false;
    bool canServe_ = true;
    UserService::State service_ = notInstalled;
    QString startError_;
    QStringList started_;
    Shown shown_;
    PluginStarter starter_{{[this](const auto& answer) { answer(service_); },
                            [this](const auto& answer) {
                                started_ += "service";
                                answer(startError_);
                            },
                            [this](const QString& program, const QString& /*messages*/) {
                                started_ += program;
                                return startError_;
                            }},
                           program_,
                           QString::fromStdString(folder_.path() / "messages")};
    PluginHealth watch_{loop_,
                        {[this] { return isConnected_; }, [this] { return isOnTheBus_; },
                         [this] { return canServe_; }, starter_,
                         [this](Problem problem) { shown_.push_back(problem); }}};
};

} // namespace

TEST_F(PluginHealthTest, TellsOfAPluginThatIsAwayForTwoSecondsUntilOneIsThere) {
    watch_.begin();
    pass(1900ms);
    EXPECT_EQ(takeShown(), Shown());
    pass(200ms);
    EXPECT_EQ(takeShown(), Shown{Problem::absent});
    for (const bool byName : {false, true}) {
        set(!byName, byName);
        EXPECT_EQ(takeShown(), Shown{Problem::none}) << "at once";
        set(false, false);
        pass(1900ms);
        EXPECT_EQ(takeShown(), Shown());
        pass(200ms);
        EXPECT_EQ(takeShown(), Shown{Problem::absent});
    }
}

TEST_F(PluginHealthTest, ARestartIsNoProblem) {
    watch_.begin();
    pass(1500ms);
    set(false, true);
    set(true, true);
    pass(20s);
    set(false, true);
    set(false, false);
    pass(1900ms);
    set(true, true);
    EXPECT_EQ(takeShown(), Shown());
    // Systemd waits for some seconds before it starts a service again that has failed.
    service_ = starting;
    set(false, false);
    pass(3500ms);
    set(true, true);
    EXPECT_EQ(takeShown(), Shown());
    // But one that fails each time is a problem.
    set(false, false);
    pass(6500ms);
    EXPECT_EQ(takeShown(), Shown{Problem::absent});
}

TEST_F(PluginHealthTest, OneThatConnectsButHasNotCheckedInIsThere) {
    watch_.begin();
    isConnected_ = true; // which nobody announces
    pass(3s);
    EXPECT_EQ(takeShown(), Shown());
}

TEST_F(PluginHealthTest, OneThatIsOnTheBusHasTenSecondsToConnect) {
    watch_.begin();
    set(false, true);
    pass(9900ms);
    EXPECT_EQ(takeShown(), Shown());
    pass(200ms);
    EXPECT_EQ(takeShown(), Shown{Problem::silent});
    watch_.help();
    EXPECT_EQ(started_, QStringList()) << "one runs already";
    set(true, true);
    EXPECT_EQ(takeShown(), Shown{Problem::none});
}

TEST_F(PluginHealthTest, TellsAtOnceOfASocketThatCannotBeServedAndTriesAgain) {
    for (const bool isAsked : {true, false}) {
        SCOPED_TRACE(isAsked);
        canServe_ = false;
        watch_.begin();
        EXPECT_EQ(takeShown(), Shown{Problem::noSocket});
        set(false, true);
        watch_.help();
        pass(5s);
        EXPECT_EQ(takeShown(), Shown()) << "still the same";
        canServe_ = true;
        isAsked ? watch_.help() : pass(5s);
        EXPECT_EQ(takeShown(), Shown{Problem::none});
        set(false, false);
        pass(2100ms);
        EXPECT_EQ(takeShown(), Shown{Problem::absent});
    }
}

TEST_F(PluginHealthTest, StartsTheServiceIfThereIsOneElseTheProgram) {
    QFile(program_).open(QIODevice::WriteOnly);
    QFile::setPermissions(program_, QFile::ReadOwner | QFile::ExeOwner);
    for (const bool hasService : {true, false}) {
        service_ = hasService ? stopped : notInstalled;
        watch_.begin();
        set(false, false);
        pass(2100ms);
        takeShown();
        watch_.help();
        watch_.help(); // it has been asked for already
        EXPECT_EQ(takeShown(), Shown{Problem::starting});
        EXPECT_EQ(std::exchange(started_, {}), QStringList(hasService ? "service" : program_));
        pass(4900ms);
        set(false, true);
        set(true, true);
        EXPECT_EQ(takeShown(), Shown{Problem::none});
        set(false, false);
    }
}

TEST_F(PluginHealthTest, TellsWhyNoneHasCome) {
    const auto start = [this] {
        pass(2100ms);
        takeShown();
        watch_.help();
        return takeShown();
    };
    const Shown failed{Problem::starting, Problem::notStarted};
    watch_.begin();
    EXPECT_EQ(start(), failed) << "there is no program";
    EXPECT_TRUE(description().contains(program_ + "\n")) << description().toStdString();
    EXPECT_TRUE(description().contains("is missing"));

    service_ = {true, "masked", "inactive"};
    startError_ = "Unit is masked.";
    EXPECT_EQ(start(), failed);
    EXPECT_TRUE(description().contains("masked, inactive"));
    EXPECT_TRUE(description().contains("Unit is masked."));
    EXPECT_TRUE(description().contains("journalctl --user -u tonvale-plugin.service"));

    startError_.clear();
    EXPECT_EQ(start(), Shown{Problem::starting});
    pass(4900ms);
    EXPECT_EQ(takeShown(), Shown());
    pass(200ms);
    EXPECT_EQ(takeShown(), Shown{Problem::notStarted}) << "it has had its time";
    EXPECT_FALSE(description().contains("failed")) << description().toStdString();
}
