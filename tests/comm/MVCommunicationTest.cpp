#include "comm/MVCommunication.h"

#include "ServerFixture.h"
#include "platform/loop/Socket.h"

#include <atomic>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/stat.h>
#include <thread>
#include <tuple>

using namespace std::chrono_literals;
using support::ScriptedPlugin;

using MVCommunicationTest = ServerFixture;
using Strings = std::vector<std::string>;

TEST_F(MVCommunicationTest, ACallbackThatThrowsCostsNothingOfTheRead) {
    const auto plugin = connect();
    duringLevel = [] {
        if (levels.size() == 1)
            throw std::runtime_error("no such item");
    };
    plugin->sendBytes(ScriptedPlugin::activityBytes(7, 0.5F) +
                      ScriptedPlugin::activityBytes(7, 0.25F) +
                      ScriptedPlugin::checkinBytes(7, "player"));
    turn();
    EXPECT_EQ(levels, (Strings{"7:0.500000", "7:0.250000"}));
    EXPECT_EQ(server_->connectionProcesses()[0].name, "player");
    EXPECT_EQ(log_.count("no such item"), 1U);
    advance(100ms);
    EXPECT_EQ(levels.back(), "7:0.000000");
}

TEST_F(MVCommunicationTest, ACheckinAndActivityInOneReadAreTakenInTurn) {
    const auto plugin = connect();
    plugin->sendBytes(ScriptedPlugin::checkinBytes(4711, "player", "/usr/bin/player") +
                      ScriptedPlugin::activityBytes(4711, 0.5F) +
                      ScriptedPlugin::activityBytes(99, 0.25F)); // a pid that nobody shows
    turn();
    const auto processes = server_->connectionProcesses();
    ASSERT_EQ(processes.size(), 1);
    EXPECT_EQ(processes[0].pid, 4711U);
    EXPECT_EQ(processes[0].name, "player");
    EXPECT_EQ(processes[0].path, "/usr/bin/player");
    EXPECT_EQ(levels, (Strings{"4711:0.500000", "99:0.250000"}));
    EXPECT_EQ(log_.count("'player' connected (pid=4711, path='/usr/bin/player')"), 1U);
    EXPECT_EQ(events, "");
    advance(50ms);
    EXPECT_EQ(events, "C");
}

TEST_F(MVCommunicationTest, ABurstOfCheckinsIsAnnouncedOnceFiftyMillisecondsAfterTheLast) {
    const auto first = checkedIn(1, "a");
    advance(40ms);
    const auto second = checkedIn(2, "b");
    advance(49ms);
    EXPECT_EQ(events, "");
    advance(1ms);
    EXPECT_EQ(events, "C");
    advance(1s);
    EXPECT_EQ(events, "C");
}

TEST_F(MVCommunicationTest, CheckinsWithoutEndHoldTheCallbackUpByHalfASecondAtMost) {
    const auto restless = connect();
    const auto checkInEvery40Milliseconds = [&](int times) {
        for (int i = 0; i < times; ++i) {
            restless->checkIn(1, "restless");
            turn();
            EXPECT_EQ(events, "");
            advance(40ms);
        }
    };
    checkInEvery40Milliseconds(12); // the last one after 440 ms: a burst like others
    advance(9ms);
    EXPECT_EQ(events, "");
    advance(1ms);
    EXPECT_EQ(events, "C");
    for (int burst = 0; burst < 2; ++burst) {
        events.clear();
        checkInEvery40Milliseconds(14);
        EXPECT_EQ(events, "C") << "550 ms after the first";
    }
}

TEST_F(MVCommunicationTest, BadDataObjectsAndUnknownSocketsAreLogged) {
    const auto stranger = platform::DataSocket::create(
        platform::FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)),
        [](platform::DataSocket&, std::span<const std::byte>) {});
    const std::byte byte{0};
    server_->handleSocketData(*stranger, {});
    server_->handleSocketData(*stranger, {&byte, 1});
    ASSERT_EQ(log_.lines().size(), 2U);
    EXPECT_EQ(log_.lines()[0].text, "handleSocketData: Bad data object.");
    EXPECT_EQ(log_.lines()[1].text, "handleSocketData: Couldn't find obj for socket");
}

TEST_F(MVCommunicationTest, ATextWithoutANulGoesOnIntoWhatFollowsButNeverPastTheMessage) {
    const std::string name(128, 'n');
    const std::string path(1024, 'p');
    const auto plugin = connect();
    plugin->sendBytes(ScriptedPlugin::checkinBytes(1, name, path) + "more");
    turn();
    EXPECT_EQ(server_->connectionProcesses()[0].name.toStdString(), name + path);
    EXPECT_EQ(server_->connectionProcesses()[0].path.toStdString(), path);
}

TEST_F(MVCommunicationTest, TheLineOfAnEmptyNameSaysThatItIsEmptyAndThePidNamesTheProcess) {
    checkedIn(4711, "")->disconnect();
    EXPECT_EQ(server_->connectionProcesses()[0].name, "4711");
    EXPECT_EQ(log_.count("'' connected (pid=4711, path='/usr/bin/x')"), 1U);
    turn();
    EXPECT_EQ(log_.count("'4711' disconnected"), 1U);
}

TEST_F(MVCommunicationTest, ListsConnectionsInTheirOrderAlsoThoseThatNeverCheckIn) {
    const auto silent = connect();
    auto second = checkedIn(2, "b");
    const auto third = checkedIn(3, "c");
    second.reset();
    turn();
    const auto processes = server_->connectionProcesses();
    ASSERT_EQ(processes.size(), 2);
    EXPECT_EQ(processes[0].pid, 0U);
    EXPECT_TRUE(processes[0].name.isNull());
    EXPECT_EQ(processes[1].pid, 3U);
    EXPECT_EQ(log_.count("'b' disconnected"), 1U);
    EXPECT_EQ(events, "D");
}

TEST_F(MVCommunicationTest, AProgramThatStopsReportingGetsOneZeroATenthOfASecondLater) {
    const auto plugin = checkedIn(7, "player");
    for (int i = 0; i < 3; ++i) {
        plugin->reportLevel(7, 1.0F);
        turn();
        advance(60ms);
    }
    EXPECT_EQ(levels.size(), 3U);
    advance(39ms);
    EXPECT_EQ(levels.size(), 3U);
    advance(1ms);
    EXPECT_EQ(levels.back(), "7:0.000000");
    advance(1h);
    EXPECT_EQ(levels.size(), 4U);
}

TEST_F(MVCommunicationTest, AProgramThatDisconnectsWhilePlayingStillGetsItsZero) {
    auto plugin = checkedIn(7, "player");
    plugin->reportLevel(7, 1.0F);
    plugin.reset();
    turn();
    EXPECT_EQ(events, "D");
    EXPECT_TRUE(server_->connectionProcesses().isEmpty());
    advance(100ms);
    EXPECT_EQ(levels, (Strings{"7:1.000000", "7:0.000000"}));
}

// A callback that opens a dialog runs the loop from inside.
TEST_F(MVCommunicationTest, APluginThatDisconnectsDuringANestedLoopStillGetsItsZero) {
    auto plugin = checkedIn(7, "player");
    duringLevel = [&] {
        duringLevel = {};
        plugin.reset();
        turn();
    };
    plugin->reportLevel(7, 1.0F);
    turn();
    EXPECT_EQ(events, "D");
    advance(100ms);
    EXPECT_EQ(levels, (Strings{"7:1.000000", "7:0.000000"}));
}

TEST_F(MVCommunicationTest, ACallbackMayReleaseTheServer) {
    const auto plugin = checkedIn(7, "player");
    duringLevel = [&] {
        server_->shutdown();
        server_.reset();
    };
    plugin->sendBytes(ScriptedPlugin::activityBytes(7, 1.0F) +
                      ScriptedPlugin::activityBytes(7, 0.5F));
    turn();
    EXPECT_EQ(levels, (Strings{"7:1.000000"}));
    EXPECT_TRUE(plugin->isEnded());
}

TEST_F(MVCommunicationTest, ACommandIsSentUnchangedToAllConnectedPlugins) {
    const auto first = checkedIn(1, "a");
    send(kMVCommSetVolume, 1, 10);
    EXPECT_EQ(commands(*first, 1), (Strings{"9,1,0,10"}));

    auto second = checkedIn(2, "b");
    send(kMVCommSetVolume, 1, 29);
    send(kMVCommSetMute, 2, 1);
    send(kMVCommIgnoreListChanged, 0, 0);
    const Strings expected{"9,1,0,29", "10,2,0,1", "11,0,0,0"};
    EXPECT_EQ(commands(*first, 3), expected);
    EXPECT_EQ(commands(*second, 3), expected);

    const std::size_t descriptors = openDescriptors();
    second.reset();
    turn();
    EXPECT_TRUE(support::waitUntil([&] { return openDescriptors() == descriptors - 2; }))
        << "both ends are closed";
    send(kMVCommSetVolume, 1, 30);
    EXPECT_EQ(commands(*first, 1), (Strings{"9,1,0,30"}));
    EXPECT_EQ(log_.count("send failed"), 0U);
}

TEST_F(MVCommunicationTest, RepetitionsWithinATwelfthOfASecondAreSentOnce) {
    struct Case {
        std::chrono::milliseconds pause;
        bool allowed;
        std::size_t sent;
    };
    const auto plugin = checkedIn(1, "a");
    int marker = 0;
    for (const Case& repetition :
         {Case{80ms, false, 1}, Case{90ms, false, 2}, Case{80ms, true, 2}}) {
        server_->setAllowFrequentMessages(repetition.allowed);
        // A marker is written when what was sent before it has been dealt with.
        send(kMVCommSetVolume, 1, 50);
        send(kMVCommSetMute, ++marker, 0);
        EXPECT_EQ(commands(*plugin, 2).size(), 2U);
        clock_.advance(repetition.pause);
        send(kMVCommSetVolume, 1, 50);
        send(kMVCommSetMute, ++marker, 0);
        EXPECT_EQ(commands(*plugin, repetition.sent).size(), repetition.sent);
        clock_.advance(1h);
    }
}

TEST_F(MVCommunicationTest, CommandsForProgramsSetToTheSameValueAreNeverMerged) {
    const auto plugin = checkedIn(1, "a");
    for (const int pid : {1, 2, 1, 2})
        send(kMVCommSetVolume, pid, 50);
    EXPECT_EQ(commands(*plugin, 4), (Strings{"9,1,0,50", "9,2,0,50", "9,1,0,50", "9,2,0,50"}));
}

TEST_F(MVCommunicationTest, NothingIsSentWhileSuppressedOrWithoutMessageOrPlugin) {
    send(kMVCommSetVolume, 1, 10); // nobody is connected: not kept for later
    const auto plugin = checkedIn(1, "a");
    server_->suppressMessages(true);
    send(kMVCommSetVolume, 1, 20);
    server_->suppressMessages(false);
    server_->sendMessage(nullptr);
    send(kMVCommSetVolume, 1, 30);
    EXPECT_EQ(commands(*plugin, 1), (Strings{"9,1,0,30"}));
}

TEST_F(MVCommunicationTest, APluginThatDoesNotReadCausesOneLineASecondAndDelaysNoOther) {
    server_->setAllowFrequentMessages(true);
    const auto stuck = checkedIn(1, "stuck");
    const auto reader = checkedIn(2, "reader");
    constexpr int batches = 30;
    constexpr int perBatch = 100; // fewer than the kernel queues for a plug-in that reads
    for (int batch = 0; batch < batches; ++batch) {
        for (int value = 0; value < perBatch; ++value)
            send(kMVCommSetVolume, 2, value);
        commands(*reader, perBatch);
    }
    EXPECT_EQ(log_.count("send failed: Resource temporarily unavailable (11)"), 1U);
    EXPECT_EQ(server_->connectionProcesses().size(), 2) << "the connection stays open";

    clock_.advance(1s);
    send(kMVCommSetMute, 2, 1);
    EXPECT_TRUE(support::waitUntil([&] { return log_.count("send failed") == 2; }));
}

TEST_F(MVCommunicationTest, ReplacesAStaleSocketFileAndRemovesItsOwnAtShutdown) {
    const auto plugin = checkedIn(1, "a");
    EXPECT_EQ(std::filesystem::status(socketPath()).permissions(), std::filesystem::perms(0777));
    auto successor = MVCommunication::create(*this, QString::fromStdString(socketPath()));
    ASSERT_NE(successor, nullptr);
    server_->shutdown();
    EXPECT_TRUE(std::filesystem::exists(socketPath())) << "it is the successor's by now";
    successor->shutdown();
    EXPECT_FALSE(std::filesystem::exists(socketPath()));

    EXPECT_TRUE(plugin->isEnded());
    EXPECT_TRUE(server_->connectionProcesses().isEmpty());
    server_->shutdown();
    advance(1s);
    EXPECT_EQ(events, "") << "a pending announcement is dropped";
}

TEST_F(MVCommunicationTest, ALinkThatLeadsNowhereIsReplacedAndNotFollowed) {
    const std::string path = socketPath("link");
    std::filesystem::create_symlink(socketPath("nowhere"), path);
    const auto server = MVCommunication::create(*this, QString::fromStdString(path));
    ASSERT_NE(server, nullptr);
    EXPECT_TRUE(std::filesystem::is_socket(std::filesystem::symlink_status(path)));
    EXPECT_FALSE(std::filesystem::exists(socketPath("nowhere")));
}

TEST_F(MVCommunicationTest, AnybodyMayConnectWhateverTheUmaskAndALinkPlantedThereOpensNoOtherFile) {
    const std::string secret = socketPath("secret");
    std::ofstream(secret) << "private";
    const auto ownerOnly = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
    std::filesystem::permissions(secret, ownerOnly);
    const std::string link = socketPath("link");
    std::atomic<bool> isOver = false;
    std::thread program([&] { // of the container, which owns the folder too
        while (!isOver) {
            std::filesystem::remove(link);
            std::filesystem::create_symlink(secret, link);
            while (::renameat2(AT_FDCWD, link.c_str(), AT_FDCWD, socketPath().c_str(),
                               RENAME_EXCHANGE) != 0 &&
                   !isOver) {
            }
        }
    });
    const mode_t umask = ::umask(0077);
    for (int attempt = 0; attempt < 500; ++attempt)
        std::ignore = MVCommunication::create(*this, QString::fromStdString(socketPath()));
    isOver = true;
    program.join();
    EXPECT_EQ(std::filesystem::status(secret).permissions(), ownerOnly);
    const auto server = MVCommunication::create(*this, QString::fromStdString(socketPath()));
    EXPECT_EQ(std::filesystem::status(socketPath()).permissions(), std::filesystem::perms(0777));
    EXPECT_EQ(::umask(umask), 0077) << "everybody else's is as it was";
}

TEST_F(MVCommunicationTest, DescriptorsDoNotReachProgramsThatWeStart) {
    const auto plugin = checkedIn(1, "a");
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        const int descriptor = std::stoi(entry.path().filename());
        std::error_code gone;
        if (std::filesystem::read_symlink(entry.path(), gone).string().starts_with("socket:")) {
            EXPECT_NE(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0) << descriptor;
        }
    }
}

TEST_F(MVCommunicationTest, LongPathsAreServedUpTo253BytesAndCutThere) {
    std::string path = socketPath("");
    path.resize(253, 's');
    const auto exact = MVCommunication::create(*this, QString::fromStdString(path));
    ASSERT_NE(exact, nullptr);
    EXPECT_TRUE(std::filesystem::is_socket(path));
    exact->shutdown();

    const auto cut = MVCommunication::create(*this, QString::fromStdString(path + "beyond"));
    ASSERT_NE(cut, nullptr);
    EXPECT_EQ(cut->socketPath(), QString::fromStdString(path + "beyond"));
    EXPECT_TRUE(std::filesystem::is_socket(path));
    ScriptedPlugin plugin(path);
    turn();
    EXPECT_EQ(cut->connectionProcesses().size(), 1);
    cut->shutdown();
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(MVCommunicationTest, ASocketThatCannotBeServedYieldsNone) {
    const QString missing = QString::fromStdString(socketPath("missing/socket"));
    EXPECT_EQ(MVCommunication::create(*this, missing), nullptr);
    EXPECT_EQ(log_.count("Couldn't bind(): No such file or directory (2)"), 1U);

    const std::string occupied = socketPath("occupied");
    std::filesystem::create_directory(occupied);
    EXPECT_EQ(MVCommunication::create(*this, QString::fromStdString(occupied)), nullptr);
    EXPECT_EQ(log_.count("Couldn't unlink(): Is a directory (21)"), 1U);
    EXPECT_EQ(log_.count("Couldn't bind(): Address already in use (98)"), 1U);
}
