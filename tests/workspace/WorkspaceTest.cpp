#include "workspace/DesktopWorkspace.h"

#include "IconTheme.h"
#include "platform/bus/NotificationCenter.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/qtloop/RunLoopNotifier.h"
#include "support/ChildProcess.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <optional>

namespace fs = std::filesystem;
using support::ChildProcess;
using support::waitUntil;

namespace {

/// A workspace with desktop entries of its own. The processes are real ones.
class WorkspaceTest : public testing::Test {
  protected:
    WorkspaceTest() {
        fs::create_directory(entries_);
        for (const char* const icon : {"red", "application-x-executable"})
            theme_.add(icon, Qt::red);
    }

    /// A program that only waits, with a desktop entry.
    std::string install(const std::string& name, const std::string& more = {}) const {
        std::string program = folder_.path() / name;
        fs::copy_file("/bin/sleep", program);
        std::ofstream(entries_ / (name + ".desktop"))
            << "[Desktop Entry]\nType=Application\nName=The " << name << "\nName[de]=Der " << name
            << "\nIcon=red\nExec=" << program << " 600\n"
            << more;
        return program;
    }

    void begin() {
        auto scan = std::make_shared<ApplicationScan>(
            ApplicationScan::Environment{{entries_}, {"de_DE", {}}, SessionOfUser::current()});
        workspace_.emplace(loop_, std::move(scan), QDBusConnection("no such bus"));
        workspace_->setTileColors({Qt::yellow, Qt::black});
        workspace_->setRunningApplicationsHandler([this] { ++changes_; });
        ASSERT_FALSE(workspace_->runningApplications()) << "not known yet";
        ASSERT_TRUE(waitUntil([&] { return workspace_->runningApplications().has_value(); }));
    }

    QStringList running() const {
        QStringList names;
        const auto applications =
            workspace_->runningApplications().value_or(QList<RunningApplication>());
        for (const auto& each : applications)
            names += each.localizedName;
        return names;
    }

    bool comesToRun(const QStringList& names) const {
        return waitUntil([&] { return running() == names; });
    }

    static QColor middleOf(const QIcon& icon) {
        return icon.pixmap(32).toImage().pixelColor(16, 4);
    }

    const IconTheme theme_;
    const support::PrivateFolder folder_;
    const fs::path entries_ = folder_.path() / "applications";
    platform::RunLoop loop_;
    const platform::RunLoopNotifier notifier_{loop_};
    const platform::MainQueueService mainQueue_{loop_};
    std::optional<DesktopWorkspace> workspace_;
    int changes_ = 0;
};

} // namespace

TEST_F(WorkspaceTest, ListsRegularApplicationsInTheUsersLanguageWithAllDetails) {
    const std::string program = install("player");
    const std::string hidden = install("agent", "NoDisplay=true\n");
    const std::string waiting = install("waiter");
    ChildProcess player({program, "600"});
    ChildProcess agent({hidden, "600"});
    begin();
    ASSERT_TRUE(comesToRun({"Der player"}));
    EXPECT_EQ(changes_, 1);
    const RunningApplication first = workspace_->runningApplications()->front();
    EXPECT_EQ(first, (RunningApplication{static_cast<std::uint32_t>(player.pid()), "Der player",
                                         QString::fromStdString(entries_ / "player.desktop"),
                                         QString::fromStdString(program)}));
    const ProgramReference asked{first.pid, first.localizedName, first.executablePath};
    EXPECT_EQ(middleOf(workspace_->iconForProgram(asked)), Qt::red);
    EXPECT_EQ(workspace_->whyNamed(asked), "This application starts the program.");
    EXPECT_EQ(middleOf(workspace_->genericApplicationIcon()), Qt::red);
}

TEST_F(WorkspaceTest, LooksWhenItIsAskedToAndReadsEntriesThatHaveComeMeanwhile) {
    begin();
    EXPECT_TRUE(running().isEmpty());
    const std::string program = install("player");
    ChildProcess player({program, "600"});
    for (int i = 0; i < 100; ++i)
        workspace_->lookAgain();
    EXPECT_TRUE(comesToRun({"Der player"}));
    EXPECT_EQ(changes_, 2);
    workspace_->lookAgain();
    ChildProcess second({program, "600"});
    workspace_->lookAgain();
    support::serveEvents();
    EXPECT_EQ(running(), QStringList{"Der player"}) << "once";
}

TEST_F(WorkspaceTest, FindsOutWhatIsKnownOfAProgramThatThePluginHasNamed) {
    const std::string program = install("agent", "NoDisplay=true\n");
    ChildProcess agent({program, "600"});
    begin();
    const auto pid = static_cast<std::uint32_t>(agent.pid());
    const QString path = QString::fromStdString(program);
    const struct {
        ProgramReference program;
        QColor color;
        const char* reason;
    } cases[] = {
        {{pid, "Der agent", path}, Qt::red, "This application starts the program."},
        {{0, "Der agent", {}}, Qt::red, "This application starts the program."},
        {{pid, "What it says", path}, Qt::yellow, "The program uses this name for itself."},
        {{4711, "gone", "/usr/bin/gone"}, Qt::yellow, "The program uses this name for itself."},
    };
    for (const auto& each : cases) {
        EXPECT_FALSE(workspace_->iconForProgram(each.program).isNull());
        EXPECT_TRUE(waitUntil([&] { return !workspace_->whyNamed(each.program).isEmpty(); }));
        EXPECT_EQ(workspace_->whyNamed(each.program), each.reason);
        EXPECT_EQ(middleOf(workspace_->iconForProgram(each.program)), each.color);
    }
    EXPECT_EQ(changes_, 4) << "the first look, and each name once";
    workspace_->setTileColors({Qt::green, Qt::black});
    EXPECT_EQ(changes_, 5) << "told, so that what is shown can follow";
    EXPECT_EQ(middleOf(workspace_->iconForProgram(cases[3].program)), Qt::green);
}

TEST_F(WorkspaceTest, HearsOfDesktopEntriesThatComeOrChange) {
    const std::string program = install("player");
    const fs::path entry = entries_ / "player.desktop";
    const fs::path away = folder_.path() / "away.desktop";
    fs::rename(entry, away);
    ChildProcess player({program, "600"});
    begin();
    const auto pid = static_cast<std::uint32_t>(player.pid());
    const auto why = [&] { return workspace_->whyNamed({pid, "Der player", {}}); };
    EXPECT_TRUE(waitUntil([&] { return why() == "The program uses this name for itself."; }));
    const auto agent = [&] { return workspace_->whyNamed({0, "Der agent", {}}); };
    EXPECT_TRUE(waitUntil([&] { return agent() == "The program uses this name for itself."; }));

    fs::rename(away, entry);
    EXPECT_TRUE(comesToRun({"Der player"}));
    EXPECT_EQ(why(), "This application starts the program.");
    std::ofstream(entry) << "[Desktop Entry]\nType=Application\nName=Other\nExec=" << program;
    EXPECT_TRUE(comesToRun({"Other"})) << "it has been written in place";
    install("agent", "NoDisplay=true\n");
    EXPECT_TRUE(waitUntil([&] {
        return agent() == "The program identifies itself as this application.";
    })) << agent().toStdString();
}

TEST_F(WorkspaceTest, LooksUpAgainWhenTheNameBelongsToAnotherProcess) {
    const std::string program = install("agent", "NoDisplay=true\n");
    ChildProcess agent({program, "600"});
    begin();
    const auto why = [this](std::uint32_t pid) {
        return workspace_->whyNamed({pid, "Der agent", {}});
    };
    constexpr std::uint32_t fromElsewhere = 0x40000000;
    EXPECT_TRUE(waitUntil([&] { return !why(fromElsewhere).isEmpty(); }));
    EXPECT_EQ(why(fromElsewhere), "The program identifies itself as this application.");
    const auto pid = static_cast<std::uint32_t>(agent.pid());
    EXPECT_TRUE(waitUntil([&] { return why(pid) == "This application starts the program."; }))
        << why(pid).toStdString();
}

TEST_F(WorkspaceTest, FindsAnInvisibleProgramByTheEntryOfItsName) {
    install("player");
    begin();
    const ProgramReference inside{2, "Der player", "/app/bin/player"};
    EXPECT_TRUE(waitUntil([&] { return !workspace_->whyNamed(inside).isEmpty(); }));
    EXPECT_EQ(workspace_->whyNamed(inside), "The program identifies itself as this application.");
    EXPECT_EQ(middleOf(workspace_->iconForProgram(inside)), Qt::red);
}

TEST_F(WorkspaceTest, FindsTheIconOfAnApplicationByItsNameAndTellsEverybodyWhenItIsKnown) {
    theme_.add("red", Qt::green);
    install("player");
    begin();
    int told = 0;
    const platform::NotificationObserver observer(Workspace::didChangeNotification,
                                                  [&](const QVariant& /*object*/) { ++told; });
    const auto color = [&](const char* name) {
        return middleOf(workspace_->iconForApplication(name));
    };
    EXPECT_EQ(color("Der player"), Qt::red) << "the generic one";
    EXPECT_TRUE(waitUntil([&] { return told > 0; }));
    EXPECT_EQ(color("Der player"), Qt::green);
    EXPECT_EQ(color("nothing"), Qt::red);
    EXPECT_TRUE(waitUntil([&] { return told > 1; }));
    EXPECT_EQ(color("nothing"), Qt::red) << "not even a tile";
    std::ofstream(theme_.icons() / "application-x-executable.png") << "damaged";
    QIcon::setThemeName("ours"); // it is read anew
    EXPECT_FALSE(workspace_->genericApplicationIcon().isNull()) << "the bundle has one";
    EXPECT_NE(color("nothing"), Qt::red);
}
