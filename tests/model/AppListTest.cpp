#include "model/AppList.h"

#include "model/MVCommAppValue.h"
#include "support/PlainWorkspace.h"

#include <gtest/gtest.h>

#include <QLocale>

#include <algorithm>
#include <set>

namespace {

using Change = AppList::Change;
using Connections = QList<MVCommConnectedProcess>;
using Running = QList<RunningApplication>;

constexpr std::uint32_t own = 99;

MVCommConnectedProcess connected(std::uint32_t pid, const QString& name) {
    return {pid, name, "/usr/bin/x", name == kMVCommAudioDaemonName};
}

class AppListTest : public testing::Test {
  protected:
    void connect(const Connections& connections) {
        connections_ = connections;
        list_.mergeConnections(connections_);
        list_.mergeRunningApps(running_, own);
        list_.settle();
    }

    QList<Change> run(const Running& running) {
        running_ = running;
        QList<Change> changes = list_.mergeRunningApps(running_, own);
        list_.mergeConnections(connections_);
        list_.settle();
        return changes;
    }

    /// "name:pid", with an R behind what was made from a running program, of each record in order.
    QString shown() const {
        QStringList texts;
        for (const MVCommAppValue* const app : list_.apps())
            texts += app->displayName() + ':' + QString::number(app->pid()) +
                     (app->isRunningApp() ? "R" : "");
        return texts.join(' ');
    }

    MVCommAppValue* find(const QString& name) const {
        const auto found = std::ranges::find_if(
            list_.apps(), [&](const auto* app) { return app->processName() == name; });
        return found != list_.apps().end() ? *found : nullptr;
    }

    support::PlainWorkspace workspace_;
    std::set<QString> ignored_;
    QStringList restored_;
    AppList list_{workspace_,
                  {[this](const QString& name) { return ignored_.contains(name); },
                   [this](MVCommAppValue& app) { restored_ += app.processName(); }}};
    Connections connections_;
    Running running_;
};

} // namespace

TEST_F(AppListTest, SoundEffectsComeFirstThenNamesWithoutRegardToCase) {
    connect({connected(1, "zoom"), connected(2, "Alpha"), connected(3, "coreaudiod")});
    EXPECT_EQ(shown(), "Sound Effects:3 Alpha:2 zoom:1");
    run({{4, "beta", {}}, {5, "Tomorrow", {}}, {6, "Äther", {}}, {7, "Éclair", {}}});
    EXPECT_EQ(shown(), "Sound Effects:3 Alpha:2 Äther:6R beta:4R Éclair:7R Tomorrow:5R zoom:1");
}

TEST_F(AppListTest, TheOrderIsThatOfThePersonsLanguage) {
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::Swedish, QLocale::Sweden));
    AppList swedish(workspace_, {[](const QString&) { return false; }, [](MVCommAppValue&) {}});
    QLocale::setDefault(before);
    swedish.mergeConnections({connected(1, "Äta"), connected(2, "zoom"), connected(3, "aula")});
    swedish.settle();
    EXPECT_EQ(swedish.apps()[0]->pid(), 3U);
    EXPECT_EQ(swedish.apps()[1]->pid(), 2U);
    EXPECT_EQ(swedish.apps()[2]->pid(), 1U);
}

TEST_F(AppListTest, WhatIsEqualStaysAsItCame) {
    connect({connected(1, "PLAYER"), connected(2, "player"), connected(3, "a")});
    connect({connected(2, "player"), connected(4, "Player"), connected(1, "PLAYER")});
    EXPECT_EQ(shown(), "PLAYER:1 player:2 Player:4");
}

TEST_F(AppListTest, AProgramIsListedOnceWhicheverSourceNamesItFirst) {
    connect({connected(1, "both"), connected(2, "other"), connected(3, "both")});
    run({{1, "both", {}}, {4, "window", {}}, {5, "window", {}}, {own, "self", {}}});
    EXPECT_EQ(shown(), "both:1 other:2 window:4R");
    connect({connected(6, "window"), connected(1, "both")});
    EXPECT_EQ(shown(), "both:1 window:6R") << "the record stays, with the process that plays";
}

TEST_F(AppListTest, EveryOrderOfArrivalGivesTheSameNames) {
    struct Step {
        bool isConnection;
        std::uint32_t pid;
        const char* name;
    };
    std::vector<Step> steps{
        {true, 1, "a"}, {true, 2, "b"}, {false, 1, "a"}, {false, 3, "c"}, {true, 4, "a"}};
    std::vector<int> order{0, 1, 2, 3, 4};
    do {
        AppList list(workspace_, {[](const QString&) { return false; }, [](MVCommAppValue&) {}});
        Connections connections;
        Running running;
        for (const int i : order) {
            const Step& step = steps[static_cast<std::size_t>(i)];
            if (step.isConnection)
                connections.append(connected(step.pid, step.name));
            else
                running.append({step.pid, step.name, {}});
            list.mergeRunningApps(running, own);
            list.mergeConnections(connections);
            list.settle();
        }
        QStringList names;
        for (const MVCommAppValue* const app : list.apps())
            names += app->processName();
        ASSERT_EQ(names, (QStringList{"a", "b", "c"}));
        ASSERT_TRUE(list.apps()[0]->pid() == 1 || list.apps()[0]->pid() == 4);
        ASSERT_EQ(list.indexOfPid(3), 2);
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(AppListTest, ARecordStaysWhileEitherSourceNamesIt) {
    connect({connected(1, "player")});
    const MVCommAppValue* const record = find("player");
    run({{1, "player", {}}});
    connect({});
    EXPECT_EQ(find("player"), record) << "the plug-in has ended";
    connect({connected(1, "player")});
    run({});
    EXPECT_EQ(find("player"), record) << "it has closed its window";
    connect({});
    EXPECT_EQ(shown(), "");
}

TEST_F(AppListTest, ARecordFollowsItsProcess) {
    connect({connected(1, "player"), connected(2, "player")});
    EXPECT_EQ(list_.indexOfPid(2), -1);
    connect({connected(2, "player"), connected(1, "player")});
    EXPECT_EQ(shown(), "player:1") << "it has that one as long as that is connected";
    MVCommAppValue* const record = find("player");
    record->setActivity(40);
    connect({connected(2, "player")});
    EXPECT_EQ(shown(), "player:2") << "the first of two instances has ended";
    EXPECT_EQ(record->activity(), 0) << "the level was the other one's";
    EXPECT_EQ(list_.indexOfPid(2), 0);
    EXPECT_EQ(list_.indexOfPid(1), -1);
    connect({connected(3, "player")});
    EXPECT_EQ(shown(), "player:3") << "relaunched within one pass";
    EXPECT_EQ(find("player"), record);
    run({{5, "player", {}}, {6, "player", {}}});
    EXPECT_EQ(shown(), "player:3");
    connect({});
    EXPECT_EQ(shown(), "player:5") << "the plug-in has ended";
    run({{6, "player", {}}});
    EXPECT_EQ(shown(), "player:6");
    connect({connected(7, "player"), connected(6, "player")});
    EXPECT_EQ(shown(), "player:6");
    EXPECT_EQ(list_.connectedPids("player"), (QList<std::uint32_t>{7, 6}));
}

TEST_F(AppListTest, WithItsProcessARecordChangesPathAndIcon) {
    const QIcon oldIcon = workspace_.addIcon("/opt/old/player");
    const QIcon newIcon = workspace_.addIcon("/opt/new/player");
    connect({{1, "player", "/opt/old/player", false}});
    const MVCommAppValue* const record = find("player");
    EXPECT_EQ(record->icon().cacheKey(), oldIcon.cacheKey());
    QString seen;
    QObject::connect(record, &MVCommAppValue::iconChanged, record, [&] { seen = shown(); });
    connect({{2, "player", "/opt/new/player", false}, {3, "a", "/usr/bin/a", false}});
    EXPECT_EQ(record->path(), "/opt/new/player");
    EXPECT_EQ(record->icon().cacheKey(), newIcon.cacheKey());
    EXPECT_EQ(seen, "a:3 player:2") << "all is in order by then";
    run({{4, "player", "/usr/share/player.desktop"}});
    connect({});
    EXPECT_EQ(record->path(), "/usr/share/player.desktop");
    run({{5, "player", "/usr/share/player.desktop", "/opt/old/player"}});
    EXPECT_EQ(record->path(), "/opt/old/player");
}

TEST_F(AppListTest, OfRecordsWithOneProcessTheFirstCounts) {
    connect({connected(1, "b"), connected(1, "a")});
    EXPECT_EQ(list_.indexOfPid(1), 0);
}

TEST_F(AppListTest, AProcessBelongsToTheRecordOfItsConnectionsName) {
    ignored_ = {"hidden"};
    connect({connected(1, "player"), connected(2, "player"), connected(3, "zoom"),
             connected(4, "hidden")});
    run({{3, "Conference", {}}, {5, "Editor", {}}});
    EXPECT_EQ(list_.appOfProcess(1), find("player"));
    EXPECT_EQ(list_.appOfProcess(2), find("player")) << "another one of that name";
    EXPECT_EQ(list_.appOfProcess(3), find("zoom")) << "whatever its window is called";
    EXPECT_EQ(list_.appOfProcess(4), nullptr);
    EXPECT_EQ(list_.appOfProcess(5), find("Editor"));
    EXPECT_EQ(list_.appOfProcess(6), nullptr);
    EXPECT_TRUE(list_.isConnected(2) && list_.isConnected(4));
    EXPECT_FALSE(list_.isConnected(5));
}

TEST_F(AppListTest, LaunchesAndQuitsAreReportedButNotTheInitialPrograms) {
    ignored_ = {"hidden"};
    EXPECT_EQ(run({{1, "first", {}}, {2, "hidden", {}}}), QList<Change>());
    EXPECT_EQ(run({{1, "first", {}}, {2, "hidden", {}}, {3, "new", {}}, {4, "new", {}}}),
              (QList<Change>{{Change::launched, "new"}}));
    connect({connected(5, "sounds")});
    EXPECT_EQ(run({{5, "sounds", {}}, {3, "new", {}}}),
              (QList<Change>{{Change::quit, "first"}, {Change::quit, "hidden"}}))
        << "what is connected has a record already";
    EXPECT_EQ(run({{2, "hidden", {}}, {own, "self", {}}}),
              (QList<Change>{{Change::launchedIgnored, "hidden"},
                             {Change::quit, "sounds"},
                             {Change::quit, "new"}}));
    EXPECT_EQ(run({{2, "hidden", {}}, {own, "self", {}}}), QList<Change>());
}

TEST_F(AppListTest, IgnoredNamesHaveNoRecordAndLoseTheirs) {
    ignored_ = {"hidden"};
    connect({connected(1, "hidden"), connected(2, "player")});
    run({{3, "window", {}}, {4, "hidden", {}}});
    EXPECT_EQ(shown(), "player:2 window:3R");
    ignored_ = {"player", "window"};
    list_.settle();
    EXPECT_EQ(shown(), "");
    run(running_);
    EXPECT_EQ(shown(), "hidden:1R");
}

TEST_F(AppListTest, EveryRecordIsRestoredAtEveryMerge) {
    connect({connected(1, "a")});
    run({{2, "b", {}}});
    restored_.clear();
    connect(connections_);
    EXPECT_EQ(restored_, (QStringList{"a", "b"}));
}
