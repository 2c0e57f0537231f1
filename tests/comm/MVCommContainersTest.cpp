#include "ContainersFixture.h"
#include "comm/MVComm.h"
#include "comm/MVCommSocketPath.h"
#include "platform/loop/UnixSocket.h"
#include "support/ScriptedPlugin.h"

#include <QString>

#include <algorithm>
#include <memory>
#include <optional>
#include <sys/socket.h>

using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

// There is no session bus here, so each attempt to announce the launch is a line in the log.
constexpr const char* announcement = "Couldn't post com.quarnel.mivo.guiDidLaunch";

class MVCommContainersTest : public ContainersFixture {
  protected:
    void start() {
        comm_.emplace();
        comm_->setAppConnectCallback(&recordConnection);
        comm_->setAppDisconnectCallback(&recordDisconnection);
        ASSERT_TRUE(comm_->setupPluginConnectionWithCallBack(&recordLevel));
    }

    std::string socketOf(const std::string& name) const {
        return container(name) / "Data" / kMVCommSocketName;
    }

    /// Has what was changed take its effect.
    void settle() {
        notice();
        advance(100ms);
    }

    std::unique_ptr<support::ScriptedPlugin> checkedIn(const std::string& socket,
                                                       std::uint32_t pid) {
        auto plugin = std::make_unique<support::ScriptedPlugin>(socket);
        plugin->checkIn(pid, "player");
        turn();
        return plugin;
    }

    std::vector<std::uint32_t> pids() const {
        std::vector<std::uint32_t> pids;
        for (const MVCommConnectionProcess& process : comm_->connectionProcesses())
            pids.push_back(process.pid);
        return pids;
    }

    /// What was logged, announcements and the log's own information left out.
    std::vector<std::string> noise() const {
        std::vector<std::string> noise;
        for (const auto& line : log_.lines()) {
            if (line.priority != platform::LogPriority::info &&
                line.text.find(announcement) == std::string::npos)
                noise.push_back(line.text);
        }
        return noise;
    }

    using Pids = std::vector<std::uint32_t>;

    const support::ScopedVariable socketFolder_{"TONVALE_SOCKET_DIR", folder_.path().string()};
    std::optional<MVComm> comm_;
};

} // namespace

TEST_F(MVCommContainersTest, ServesTheContainersThatThereAreBehindTheMainSocket) {
    makeFolders(container("b/Data"));
    makeFolders(container("a/Data"));
    makeFolders(container(".hidden/Data"));
    makeFolders(container("incomplete"));
    makeFolders(container("unusual"));
    std::ofstream(container("unusual/Data")) << "no folder";
    std::ofstream(container("file")) << "no container";
    fs::create_directory_symlink("nowhere", container("dangling"));
    fs::create_directory_symlink("dangling", container("endless"));
    fs::create_directory_symlink(home_, container("home"));
    start();
    EXPECT_EQ(MVComm::containerLibraries(),
              (QStringList{QString::fromStdString(container(".hidden/Data")),
                           QString::fromStdString(container("a/Data")),
                           QString::fromStdString(container("b/Data"))}));
    advance(100ms);
    advance(99ms);
    EXPECT_EQ(log_.count(announcement), 0U);
    advance(1ms);
    EXPECT_EQ(log_.count(announcement), 1U);

    const auto last = checkedIn(socketOf("b"), 3);
    const auto second = checkedIn(socketOf("a"), 2);
    const auto first = checkedIn(socketPath(kMVCommSocketName), 1);
    EXPECT_EQ(pids(), (Pids{1, 2, 3}));
    EXPECT_FALSE(fs::exists(container("incomplete/Data")));
    comm_->shutdown();
    EXPECT_FALSE(fs::exists(socketOf("a")));
    EXPECT_FALSE(fs::exists(socketOf("b")));
}

TEST_F(MVCommContainersTest, ServesNewContainersAndAnnouncesABurstOnce) {
    start();
    advance(100ms);
    advance(100ms);
    log_.clear();
    for (const char* const name : {"a", "b", "c"})
        makeFolders(container(name + std::string("/Data")));
    settle();
    const auto plugin = checkedIn(socketOf("a"), 1);
    checkedIn(socketOf("c"), 2)->disconnect();
    advance(100ms);
    advance(100ms);
    EXPECT_EQ(log_.count(announcement), 1U);

    comm_->injectIntoContainers();
    advance(1s);
    EXPECT_FALSE(plugin->isEnded()) << "nobody takes a served socket away";
    EXPECT_EQ(log_.count(announcement), 1U);
    EXPECT_EQ(noise(), std::vector<std::string>{});
}

TEST_F(MVCommContainersTest, NewContainersArePreparedBeforeTheyAreServedButNotForever) {
    start();
    std::vector<std::function<void()>> ready;
    comm_->setContainerPreparation(
        [&](const std::function<void()>& call) { ready.push_back(call); });
    makeFolders(container("a/Data"));
    settle();
    makeFolders(container("b/Data"));
    settle();
    ASSERT_EQ(ready.size(), 2U);
    ready[0](); // what it has prepared is not b
    EXPECT_FALSE(fs::exists(socketOf("a")));
    ready[1]();
    EXPECT_TRUE(fs::exists(socketOf("a")) && fs::exists(socketOf("b")));
    const auto plugin = checkedIn(socketOf("a"), 1);
    ready[1]();
    fs::remove_all(container("b"));
    settle();
    EXPECT_EQ(ready.size(), 2U) << "there is nothing to prepare";

    makeFolders(container("late/Data"));
    settle();
    advance(199ms);
    makeFolders(container("later/Data"));
    settle();
    EXPECT_FALSE(fs::exists(socketOf("late")));
    advance(1ms);
    EXPECT_TRUE(fs::exists(socketOf("late"))) << "0.3 s after the first of them";
    ready[2]();
    EXPECT_FALSE(plugin->isEnded());
    makeFolders(container("last/Data"));
    settle();
    comm_->shutdown();
    ready.back()();
    advance(1s);
    EXPECT_FALSE(fs::exists(socketOf("last")));
}

TEST_F(MVCommContainersTest, AContainerThatVanishesTakesItsServerWithIt) {
    makeFolders(container("a/Data"));
    makeFolders(container("b/Data"));
    start();
    advance(1s);
    const auto gone = checkedIn(socketOf("a"), 1);
    const auto stays = checkedIn(socketOf("b"), 2);
    gone->reportLevel(1, 0.5F);
    turn();
    advance(50ms);
    log_.clear();
    levels.clear();
    events.clear();

    fs::remove_all(container("a"));
    settle();
    EXPECT_TRUE(gone->isEnded());
    EXPECT_FALSE(stays->isEnded());
    EXPECT_EQ(pids(), Pids{2});
    EXPECT_EQ(events, "D");
    ASSERT_FALSE(levels.empty());
    EXPECT_EQ(levels.back(), "1:0.000000") << "nobody hears it any more";
    advance(1s);

    makeFolders(container("a/Data"));
    settle();
    const auto back = checkedIn(socketOf("a"), 3);
    fs::remove_all(container("a"));
    makeFolders(container("a/Data")); // within one burst
    settle();
    EXPECT_TRUE(back->isEnded());
    const auto again = checkedIn(socketOf("a"), 4);
    fs::rename(container("a"), container("c"));
    settle();
    EXPECT_TRUE(again->isEnded());
    const auto renamed = checkedIn(socketOf("c"), 5);
    fs::remove_all(inHome("Library"));
    settle();
    EXPECT_TRUE(pids().empty());
    advance(1s);
    EXPECT_EQ(noise(), std::vector<std::string>{});
}

TEST_F(MVCommContainersTest, AVanishedSocketFileIsRecreatedAndConnectionsStay) {
    makeFolders(container("a/Data"));
    start();
    advance(1s);
    advance(1s);
    const std::string aside = socketPath("aside");
    for (const std::string& socket : {socketPath(kMVCommSocketName), socketOf("a")}) {
        SCOPED_TRACE(socket);
        const auto plugin = checkedIn(socket, 1);
        for (const bool isMoved : {false, true, false}) {
            log_.clear();
            isMoved ? fs::rename(socket, aside) : static_cast<void>(fs::remove(socket));
            notice();
            advance(299ms);
            EXPECT_FALSE(fs::exists(socket));
            advance(1ms);
            EXPECT_EQ(fs::status(socket).permissions(), fs::perms(0777));
            EXPECT_EQ(log_.count("Recreated " + socket), 1U);
            const auto later = checkedIn(socket, 2);
            EXPECT_EQ(pids(), (Pids{1, 2}));
            notice();
            advance(1s);
            advance(1s);
            EXPECT_EQ(log_.count(announcement), 1U) << "plug-ins may be waiting";
            later->disconnect();
            turn();
        }
        EXPECT_FALSE(plugin->isEnded());
        plugin->disconnect();
        turn();
    }
    comm_->shutdown();
    EXPECT_FALSE(fs::exists(socketPath(kMVCommSocketName)) || fs::exists(socketOf("a")));
}

TEST_F(MVCommContainersTest, APathTakenByAnotherProgramIsLoggedOnceAndNotTouchedUntilThatEnds) {
    start();
    const std::string socket = socketPath(kMVCommSocketName);
    const auto plugin = checkedIn(socket, 1);
    const auto bindInstead = [&] {
        fs::remove(socket);
        platform::FileDescriptor other = platform::makeUnixSocket();
        EXPECT_TRUE(platform::bindUnixSocket(other.get(), socket));
        return other;
    };
    platform::FileDescriptor other;
    for (int start = 0; start < 3; ++start) {
        other = bindInstead();
        ASSERT_EQ(::listen(other.get(), 5), 0);
        notice();
        advance(1s);
        platform::FileDescriptor served = platform::connectUnixSocket(socket);
        EXPECT_TRUE(platform::FileDescriptor(::accept(other.get(), nullptr, nullptr)));
    }
    EXPECT_EQ(log_.count("Another program listens on " + socket), 1U);
    EXPECT_EQ(pids(), Pids{1});
    EXPECT_FALSE(plugin->isEnded());

    fs::remove(socket);
    notice();
    advance(300ms);
    const auto later = checkedIn(socket, 2);
    EXPECT_EQ(pids(), (Pids{1, 2}));
    other = bindInstead(); // without listening: as after a crash
    notice();
    advance(300ms);
    const auto last = checkedIn(socket, 3);
    EXPECT_EQ(pids(), (Pids{1, 2, 3}));
    EXPECT_EQ(log_.count("Another program listens on "), 1U);

    other = bindInstead();
    ASSERT_EQ(::listen(other.get(), 5), 0);
    comm_->shutdown();
    EXPECT_TRUE(fs::exists(socket)) << "it is not ours";
    fs::remove(socket);
}

TEST_F(MVCommContainersTest, ASocketWhoseFolderWasRemovedReturnsWithIt) {
    start();
    makeFolders(socketPath("folder"));
    const std::string socket = socketPath("folder/socket");
    ASSERT_TRUE(comm_->addCommForPath(QString::fromStdString(socket)));
    const auto plugin = checkedIn(socket, 1);
    fs::remove_all(socketPath("folder"));
    for (const char* const other : {"one", "two"}) {
        notice();
        advance(300ms);
        std::ofstream(socketPath(other)) << "x";
    }
    EXPECT_EQ(log_.count("Couldn't bind(): No such file or directory (2)"), 1U);
    makeFolders(socketPath("folder"));
    notice();
    advance(300ms);
    const auto later = checkedIn(socket, 2);
    EXPECT_EQ(pids(), (Pids{1, 2}));
    EXPECT_FALSE(plugin->isEnded());
}

TEST_F(MVCommContainersTest, ServesFiveHundredContainers) {
    constexpr int many = 500;
    for (int i = 0; i < many; ++i)
        makeFolders(container(std::to_string(i) + "/Data"));
    start();
    advance(100ms);
    advance(100ms);
    for (int i = 0; i < many; ++i)
        ASSERT_TRUE(fs::is_socket(socketOf(std::to_string(i)))) << i;
    EXPECT_EQ(log_.count(announcement), 1U);
    const auto plugin = checkedIn(socketOf("499"), 1);
    EXPECT_EQ(pids(), Pids{1});
    EXPECT_EQ(noise(), std::vector<std::string>{});
}

TEST_F(MVCommContainersTest, ServesOthersWhileTheServersOfManyEnd) {
    constexpr int many = 50;
    for (int i = 0; i < many; ++i)
        makeFolders(container(std::to_string(i) + "/Data"));
    start();
    const auto gone = checkedIn(socketOf("49"), 1);
    fs::remove_all(container(""));
    makeFolders(container("other/Data"));
    settle();
    const auto other = checkedIn(socketOf("other"), 2);
    EXPECT_EQ(pids(), Pids{2});
    makeFolders(container("0/Data"));
    makeFolders(container("49/Data")); // whose last server has hardly ended
    settle();
    advance(200ms);
    for (int i = 0; i < many; ++i)
        turn();
    EXPECT_TRUE(gone->isEnded());
    EXPECT_EQ(std::ranges::count(events, 'D'), 1) << "only one had anybody";
    const auto first = checkedIn(socketOf("0"), 3);
    const auto last = checkedIn(socketOf("49"), 4);
    EXPECT_EQ(pids(), (Pids{2, 3, 4}));
    EXPECT_EQ(noise(), std::vector<std::string>{});
}

TEST_F(MVCommContainersTest, TheEndOfAllComesBeforeTheServersOfManyHaveEnded) {
    std::vector<std::unique_ptr<support::ScriptedPlugin>> plugins;
    for (const char* const name : {"a", "b", "c"})
        makeFolders(container(name + std::string("/Data")));
    start();
    for (const char* const name : {"a", "b", "c"})
        plugins.push_back(checkedIn(socketOf(name), 1));
    fs::remove_all(container(""));
    notice();
    clock_.advance(100ms);
    loop_.turn();
    EXPECT_TRUE(pids().empty());
    EXPECT_FALSE(plugins[0]->isEnded()) << "one ends in each turn";
    comm_->shutdown();
    for (const auto& plugin : plugins)
        EXPECT_TRUE(plugin->isEnded());
    events.clear();
    levels.clear();
    advance(1s);
    EXPECT_EQ(events, "");
    EXPECT_TRUE(levels.empty());
}

TEST_F(MVCommContainersTest, ContainersThatCannotBeServedDoNotHinderOthers) {
    makeFolders(container("locked"));
    fs::create_directory_symlink("/proc/self", container("locked/Data")); // not even root's to fill
    makeFolders(socketOf("occupied"));
    // Cut to what a server takes, both would be one socket beside the containers.
    for (const char* const end : {"1", "2"})
        makeFolders(container(std::string(254, 'l') + end) / "Data");
    makeFolders(container("z/Data"));
    start();
    EXPECT_EQ(log_.count("Couldn't bind(): "), 1U);
    EXPECT_EQ(log_.count("the path has more than 253 bytes"), 2U);
    EXPECT_EQ(noise().size(), 4U) << "the occupied path can't be unlinked either";
    for (const auto& entry : fs::directory_iterator(container("")))
        EXPECT_FALSE(entry.is_socket()) << entry.path();
    const auto plugin = checkedIn(socketOf("z"), 1);
    EXPECT_EQ(pids(), Pids{1});

    int prepared = 0;
    comm_->setContainerPreparation([&](const std::function<void()>& ready) {
        ++prepared;
        ready();
    });
    makeFolders(container("z/other"));
    settle();
    EXPECT_EQ(noise().size(), 4U) << "it would fail for the same reasons";
    EXPECT_EQ(prepared, 0);
    fs::remove(socketOf("occupied"));
    makeFolders(container("z/another"));
    settle();
    EXPECT_EQ(prepared, 1);
    const auto free = checkedIn(socketOf("occupied"), 2);
    EXPECT_EQ(pids(), (Pids{1, 2}));
    EXPECT_EQ(noise().size(), 4U);
}

TEST_F(MVCommContainersTest, AnotherPathToTheSameContainerDoesNotTakeItsSocket) {
    makeFolders(container("b/Data"));
    start();
    const auto plugin = checkedIn(socketOf("b"), 1);
    fs::create_directory_symlink("b", container("a"));
    settle();
    EXPECT_FALSE(plugin->isEnded());
    const auto throughLink = checkedIn(socketOf("a"), 2);
    EXPECT_EQ(pids(), (Pids{1, 2}));
    fs::remove(container("a"));
    settle();
    const auto later = checkedIn(socketOf("b"), 3);
    EXPECT_EQ(pids(), (Pids{1, 2, 3}));
}

TEST_F(MVCommContainersTest, BeforeTheCallbacksAndAfterTheEndNothingHappens) {
    makeFolders(container("a/Data"));
    comm_.emplace();
    const auto early = checkedIn(socketOf("a"), 1);
    early->reportLevel(1, 0.5F);
    early->disconnect();
    turn();
    advance(1s);
    EXPECT_TRUE(levels.empty());

    start();
    comm_->shutdown();
    makeFolders(container("b/Data"));
    settle();
    advance(1s);
    EXPECT_FALSE(fs::exists(socketOf("b")));
}

TEST_F(MVCommContainersTest, WithoutAHomeThereAreNoContainers) {
    makeFolders(container("a/Data"));
    const support::ScopedVariable elsewhere("HOME", (folder_.path() / "none").string());
    EXPECT_TRUE(MVComm::containerLibraries().isEmpty());
    start();
    EXPECT_FALSE(fs::exists(socketOf("a")));
    EXPECT_EQ(noise(), std::vector<std::string>{});
}
