#include "comm/MVComm.h"

#include "CommFixture.h"
#include "comm/MVCommConnectedProcess.h"
#include "comm/MVCommSocketPath.h"
#include "support/ScopedVariable.h"
#include "support/ScriptedPlugin.h"

#include <QString>

#include <fstream>
#include <unistd.h>

using namespace std::chrono_literals;

// There is no session bus here, so each attempt to announce the launch is a line in the log.
class MVCommTest : public CommFixture {
  protected:
    bool serve(const std::string& name) {
        return comm_.addCommForPath(QString::fromStdString(socketPath(name)));
    }

    std::size_t announcements() const {
        return log_.count("Couldn't post com.quarnel.mivo.guiDidLaunch");
    }

    const support::ScopedVariable socketFolder_{"TONVALE_SOCKET_DIR", folder_.path().string()};
    MVComm comm_;
};

TEST_F(MVCommTest, AnnouncesABurstOfAdditionsOnceTwoTenthsOfASecondAfterTheLast) {
    ASSERT_TRUE(serve("first"));
    advance(90ms);
    ASSERT_TRUE(serve("second"));
    advance(100ms);
    advance(99ms);
    EXPECT_EQ(announcements(), 0U);
    advance(1ms);
    EXPECT_EQ(announcements(), 1U);
    advance(1h);
    EXPECT_EQ(announcements(), 1U);

    ASSERT_TRUE(serve("third"));
    comm_.shutdown();
    advance(1h);
    EXPECT_EQ(announcements(), 1U) << "an application that is going away announces nothing";
}

TEST_F(MVCommTest, AnotherBroadcastPostponesTheAnnouncement) {
    comm_.broadcastDidLaunchNotification();
    advance(60ms);
    comm_.broadcastDidLaunchNotification();
    advance(99ms);
    EXPECT_EQ(announcements(), 0U);
    advance(1ms);
    EXPECT_EQ(announcements(), 1U);
}

TEST_F(MVCommTest, EveryServerGetsCommandsAndSettingsAndAddsItsProcesses) {
    ASSERT_TRUE(serve("first"));
    ASSERT_TRUE(serve("second"));
    support::ScriptedPlugin late(socketPath("second"));
    support::ScriptedPlugin early(socketPath("first"));
    late.checkIn(2, "b");
    early.checkIn(1, "a");
    turn();
    const auto processes = comm_.connectionProcesses();
    ASSERT_EQ(processes.size(), 2);
    EXPECT_EQ(processes[0].pid, 1U) << "in the order of the servers";
    EXPECT_EQ(processes[1].pid, 2U);

    const MVCommConsoleMessage suppressed{kMVCommSetVolume, 1, 0, 10};
    const MVCommConsoleMessage sent{kMVCommSetVolume, 1, 0, 20};
    comm_.suppressMessages(true);
    comm_.sendMessage(&suppressed);
    comm_.suppressMessages(false);
    comm_.sendMessage(&sent);
    comm_.setAllowFrequentMessages(true);
    comm_.sendMessage(&sent); // a repetition, which only this setting lets through
    comm_.shutdown();         // waits for the sends
    for (support::ScriptedPlugin* const plugin : {&early, &late}) {
        const auto commands = plugin->takeCommands();
        ASSERT_EQ(commands.size(), 2U);
        EXPECT_EQ(commands[0].value, 20);
    }
    EXPECT_FALSE(std::filesystem::exists(socketPath("first")));
    EXPECT_TRUE(comm_.connectionProcesses().isEmpty());
}

TEST_F(MVCommTest, ConnectedProcessesAreThoseThatHaveCheckedIn) {
    ASSERT_TRUE(serve("socket"));
    support::ScriptedPlugin daemon(socketPath("socket"));
    support::ScriptedPlugin silent(socketPath("socket"));
    support::ScriptedPlugin alike(socketPath("socket"));
    support::ScriptedPlugin nameless(socketPath("socket"));
    daemon.checkIn(1, "coreaudiod", "/usr/sbin/coreaudiod");
    alike.checkIn(3, "CoreAudioD", "/usr/bin/x");
    nameless.checkIn(4, "", "");
    turn();
    EXPECT_EQ(comm_.connectionProcesses().size(), 4);
    const auto processes = MVCommCopyConnectedProcesses(comm_);
    ASSERT_EQ(processes.size(), 3);
    EXPECT_EQ(processes[0].pid, 1U);
    EXPECT_EQ(processes[0].name, "coreaudiod");
    EXPECT_EQ(processes[0].path, "/usr/sbin/coreaudiod");
    EXPECT_TRUE(processes[0].isAudioDaemon);
    EXPECT_EQ(processes[1].pid, 3U);
    EXPECT_FALSE(processes[1].isAudioDaemon);
    EXPECT_EQ(processes[2].name, "4");
}

TEST_F(MVCommTest, SettingsDoNotReachServersThatAreAddedLater) {
    comm_.suppressMessages(true);
    ASSERT_TRUE(serve("late"));
    support::ScriptedPlugin plugin(socketPath("late"));
    turn();
    const MVCommConsoleMessage message{kMVCommSetVolume, 1, 0, 20};
    comm_.sendMessage(&message);
    comm_.shutdown();
    EXPECT_EQ(plugin.takeCommands().size(), 1U);
}

TEST_F(MVCommTest, AMainSocketThatCannotBeServedIsAnAnswerNotAnEnd) {
    const support::ScopedVariable missing("TONVALE_SOCKET_DIR", socketPath("missing"));
    EXPECT_FALSE(comm_.setupPluginConnectionWithCallBack(&recordLevel));
    const MVCommConsoleMessage message{};
    comm_.sendMessage(&message);
    advance(1s);
    EXPECT_EQ(announcements(), 0U);
    EXPECT_TRUE(comm_.connectionProcesses().isEmpty());
}

TEST(MVCommSocketPath, IsTheSharedOneUnlessItBelongsToAnotherUser) {
    const support::PrivateFolder folder;
    const std::string shared = folder.path() / kMVCommSocketName;
    MVCommSocketPlaces places{"", folder.path(), "/run/user/1", ::geteuid()};
    const std::string runtime = std::string("/run/user/1/") + kMVCommSocketName;

    EXPECT_EQ(MVCommMainSocketPath(places), shared);
    EXPECT_EQ(MVCommCandidateSocketPaths(places), (std::vector<std::string>{shared, runtime}));

    std::ofstream(shared) << "ours";
    EXPECT_EQ(MVCommMainSocketPath(places), shared);

    places.user = ::geteuid() + 1; // now the file is another user's
    EXPECT_EQ(MVCommMainSocketPath(places), runtime);
    EXPECT_EQ(MVCommCandidateSocketPaths(places), (std::vector<std::string>{runtime}));

    std::filesystem::remove(shared);
    std::filesystem::create_symlink("nowhere", shared);
    EXPECT_EQ(MVCommMainSocketPath(places), runtime) << "also a link that leads nowhere";

    places.runtimeFolder.clear();
    EXPECT_EQ(MVCommMainSocketPath(places), shared) << "there is no other place to try";

    places.overridingFolder = "/elsewhere";
    const std::string elsewhere = std::string("/elsewhere/") + kMVCommSocketName;
    EXPECT_EQ(MVCommMainSocketPath(places), elsewhere);
    EXPECT_EQ(MVCommCandidateSocketPaths(places), (std::vector<std::string>{elsewhere}));
}
