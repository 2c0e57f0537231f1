#include "ServerFixture.h"

#include "platform/base/FileDescriptor.h"
#include "platform/loop/Socket.h"
#include "platform/loop/Timer.h"
#include "platform/loop/UnixSocket.h"

#include "support/NoDescriptorsToSpare.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <malloc.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace std::chrono_literals;
using platform::FileDescriptor;
using support::ScriptedPlugin;

namespace {

using MVCommunicationLoadTest = ServerFixture;

constexpr std::size_t activitySize = sizeof(MVCommActivityMessage);

/// A plug-in that never waits for its turn: keeps the socket full, in large writes that leave
/// messages anywhere.
class Flooder {
  public:
    Flooder(const std::string& path, std::string_view message)
        : socket_(platform::connectUnixSocket(path)) {
        while (bytes_.size() < std::size_t{64} * 1024)
            bytes_ += message;
    }

    void fill() {
        for (;;) {
            const std::string_view rest = std::string_view(bytes_).substr(sent_ % bytes_.size());
            const ssize_t sent =
                ::send(socket_.get(), rest.data(), rest.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
            if (sent <= 0)
                return;
            sent_ += static_cast<std::size_t>(sent);
        }
    }

    std::size_t sent() const { return sent_; }

  private:
    const FileDescriptor socket_;
    std::string bytes_;
    std::size_t sent_ = 0;
};

} // namespace

// A plug-in of another user, as the kernel tells it.
TEST_F(MVCommunicationLoadTest, OnlyOurOwnUserAndTheSystemsMayConnect) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only the system's user can become another";
    FileDescriptor listening = platform::makeUnixSocket();
    ASSERT_TRUE(platform::bindUnixSocket(listening.get(), socketPath("other")));
    ASSERT_EQ(::listen(listening.get(), 5), 0);
    const auto entrance = platform::AcceptSocket::create(
        std::move(listening), [](platform::AcceptSocket&, FileDescriptor) {});
    ASSERT_TRUE(entrance->schedule(loop_));

    constexpr uid_t stranger = 65534;
    struct Case {
        uid_t peer;
        uid_t server;
        bool accepted;
    };
    for (const Case& pair : {Case{0, 0, true}, Case{stranger, 0, false},
                             Case{stranger, stranger, true}, Case{0, stranger, true}}) {
        std::array<int, 2> ends{};
        ASSERT_EQ(::seteuid(pair.peer), 0);
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
        ASSERT_EQ(::seteuid(0), 0);
        ASSERT_EQ(::seteuid(pair.server), 0);
        const FileDescriptor peer(ends[1]);
        const auto before = server_->connectionProcesses().size();
        server_->handleBaseSocketAccept(*entrance, FileDescriptor(ends[0]));
        ASSERT_EQ(::seteuid(0), 0);
        EXPECT_EQ(server_->connectionProcesses().size() > before, pair.accepted)
            << pair.peer << " to " << pair.server;
    }
    EXPECT_EQ(log_.count("Closed the connection of a program of user 65534"), 1U);
}

namespace {

class StrangersTest : public ServerFixture {
  protected:
    bool acceptsUser(uid_t) const override { return false; }
};

} // namespace

TEST_F(StrangersTest, AreClosedAtOnceWithAtMostOneLineASecond) {
    const std::string line = "Closed the connection of a program of user ";
    const auto first = connect();
    EXPECT_TRUE(first->isEnded());
    EXPECT_TRUE(server_->connectionProcesses().isEmpty());
    EXPECT_EQ(log_.count(line + std::to_string(::geteuid())), 1U);
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(connect()->isEnded());
    EXPECT_EQ(log_.count(line), 1U);
    clock_.advance(1s);
    EXPECT_TRUE(connect()->isEnded());
    EXPECT_EQ(log_.count(line), 2U);
    EXPECT_EQ(events, "");
}

TEST_F(MVCommunicationLoadTest, AcceptingRestsWithoutADescriptorToSpareUntilOneIsFreeOrASecond) {
    constexpr std::string_view line = "Not accepting connections for now: Too many open files (24)";
    auto early = checkedIn(1, "early");
    EXPECT_FALSE(isBusy());
    EXPECT_EQ(log_.count(line), 0U);
    const auto waiting = std::make_unique<ScriptedPlugin>(socketPath());
    const auto later = std::make_unique<ScriptedPlugin>(socketPath());
    const auto last = std::make_unique<ScriptedPlugin>(socketPath());
    {
        const support::NoDescriptorsToSpare limit;
        turn();
        EXPECT_EQ(server_->connectionProcesses().size(), 1);
        EXPECT_FALSE(isBusy()) << "the connections that wait make it spin";
        for (int second = 0; second < 5; ++second)
            advance(1s);
        EXPECT_EQ(log_.count(line), 1U);
        EXPECT_TRUE(FileDescriptor(::dup(STDERR_FILENO))) << "our own work still gets some";

        early->reportLevel(1, 1.0F); // its record has to stay for its zero; its descriptor has not
        early.reset();
        const FileDescriptor insteadOfItsEnd(::dup(STDERR_FILENO));
        turn();
        EXPECT_EQ(server_->connectionProcesses().size(), 1) << "the first that waited";
        EXPECT_EQ(events, "CD");
    }
    EXPECT_EQ(log_.count(line), 1U) << "some wait still";
    turn();
    EXPECT_EQ(server_->connectionProcesses().size(), 1);
    advance(1s);
    EXPECT_EQ(server_->connectionProcesses().size(), 3);
    waiting->checkIn(2, "waiting");
    turn();
    EXPECT_EQ(server_->connectionProcesses()[0].pid, 2U);
}

TEST_F(MVCommunicationLoadTest, AFloodStarvesNeitherTheLoopNorTheOthers) {
    constexpr std::size_t mostBytes = std::size_t{8} * 1024;
    Flooder flooder(socketPath(), ScriptedPlugin::activityBytes(1, 1.0F));
    const auto modest = checkedIn(2, "modest");
    levels.clear();
    std::size_t taken = 0;
    bool isTimerServed = false;
    platform::Timer timer(loop_, [&] { isTimerServed = true; });
    for (int round = 0; round < 100; ++round) {
        flooder.fill();
        modest->reportLevel(2, 0.5F);
        bool isCallServed = false;
        isTimerServed = false;
        loop_.post([&] { isCallServed = true; });
        timer.start(0s);
        loop_.turn();
        EXPECT_EQ(std::ranges::count(levels, "2:0.500000"), 1) << "not in the same turn";
        EXPECT_TRUE(isCallServed);
        EXPECT_TRUE(isTimerServed);
        EXPECT_LE(levels.size() - 1, mostBytes / activitySize);
        EXPECT_GE(levels.size() - 1, mostBytes / activitySize - 1) << "cut more than needed";
        taken += levels.size() - 1;
        levels.clear();
    }
    // Not one message was split, although neither side cares for their boundaries.
    while (isBusy()) {
        loop_.turn();
        EXPECT_LE(levels.size(), mostBytes / activitySize + 1);
        taken += static_cast<std::size_t>(std::ranges::count(levels, "1:1.000000"));
        levels.clear();
    }
    EXPECT_EQ(taken, flooder.sent() / activitySize);
    EXPECT_LE(log_.count("handleSocketData:"), 1U) << "the sender itself may have split the last";
}

TEST_F(MVCommunicationLoadTest, CutReadsStayWholeForACallbackWithANestedLoop) {
    const std::string unit = ScriptedPlugin::activityBytes(1, 1.0F) +
                             ScriptedPlugin::checkinBytes(1, "mixed") +
                             ScriptedPlugin::activityBytes(1, 0.5F);
    const auto plugin = connect();
    std::string burst;
    constexpr std::size_t units = 100;
    for (std::size_t i = 0; i < units; ++i)
        burst += unit;
    plugin->sendBytes(burst);
    int depth = 0;
    duringLevel = [&] {
        if (depth >= 3)
            return;
        ++depth;
        loop_.turn();
        --depth;
    };
    while (isBusy())
        loop_.turn();
    EXPECT_EQ(levels.size(), 2 * units);
    EXPECT_EQ(log_.count("'mixed' connected"), units);
    EXPECT_EQ(log_.count("handleSocketData: Duplicate checkin"), 10U);
    EXPECT_EQ(log_.count("handleSocketData:"), 10U) << "a message was split";
    advance(1s);
    EXPECT_EQ(log_.count("Suppressed " + std::to_string(units - 1 - 10) + " more lines"), 1U);
}

TEST_F(MVCommunicationLoadTest, AFaultCostsAllThatWasSentBehindItAndNothingLater) {
    const auto plugin = connect();
    std::string bytes = ScriptedPlugin::activityBytes(1, 1.0F) + std::string(4, 'x');
    for (int i = 0; i < 5000; ++i)
        bytes += ScriptedPlugin::activityBytes(1, 0.5F);
    plugin->sendBytes(bytes);
    while (isBusy())
        loop_.turn();
    EXPECT_EQ(levels, (std::vector<std::string>{"1:1.000000"}));
    EXPECT_EQ(log_.count("handleSocketData: Unknown messageID 0x78787878"), 1U);
    EXPECT_EQ(log_.count("handleSocketData:"), 1U);

    plugin->reportLevel(1, 0.25F);
    turn();
    EXPECT_EQ(levels.back(), "1:0.250000");
    plugin->disconnect();
    turn();
    EXPECT_EQ(events, "D");
}

TEST_F(MVCommunicationLoadTest, ManyFloodsAreServedInTurn) {
    std::vector<std::unique_ptr<Flooder>> flooders;
    for (int i = 0; i < 300; ++i) {
        flooders.push_back(
            std::make_unique<Flooder>(socketPath(), ScriptedPlugin::activityBytes(1, 1.0F)));
        turn();
    }
    const auto modest = checkedIn(2, "modest");
    for (int round = 0; round < 5; ++round) {
        for (const auto& flooder : flooders)
            flooder->fill();
        modest->reportLevel(2, 0.5F);
        levels.clear();
        loop_.turn();
        loop_.turn();
        EXPECT_EQ(std::ranges::count(levels, "2:0.500000"), 1);
    }
}

TEST_F(MVCommunicationLoadTest, TenThousandComingsAndGoingsLeaveNothingBehind) {
    server_->setAllowFrequentMessages(true);
    const auto constant = checkedIn(1, "constant");
    const auto rounds = [&](int number) {
        for (int i = 0; i < number; ++i) {
            auto plugin = std::make_unique<ScriptedPlugin>(socketPath());
            loop_.turn();
            plugin->checkIn(2, "passing");
            plugin->reportLevel(2, 1.0F);
            loop_.turn();
            if (i % 50 == 0)
                send(kMVCommSetVolume, 1, i % 100); // unread by the one that goes: a reset
            plugin->reportLevel(2, 0.5F);           // unread by the server
            plugin.reset();
            turn();
            constant->takeCommands();
            if (i % 100 == 0) {
                advance(100ms);
                log_.clear();
                levels.clear();
                events.clear();
            }
        }
        advance(1h); // every timer of the past has its say
        log_.clear();
        levels.clear();
        levels.shrink_to_fit();
        events = {};
    };
    constexpr int count = 10000;
    rounds(count); // what is kept for reuse has its full size then
    const std::size_t descriptors = openDescriptors();
    // What the allocator keeps in its caches counts as used, and varies; a leak grows every time.
    const auto used = [] { return static_cast<std::ptrdiff_t>(::mallinfo2().uordblks); };
    std::ptrdiff_t growth = count;
    for (int i = 0; i < 3 && growth >= count; ++i) {
        const std::ptrdiff_t before = used();
        rounds(count);
        growth = used() - before;
    }
#if !defined(__SANITIZE_ADDRESS__) &&                                                              \
    !defined(__SANITIZE_THREAD__) // have an allocator of their own
    EXPECT_LT(growth, count) << "a byte of each";
#endif
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_EQ(server_->connectionProcesses().size(), 1);
    advance(1h);
    EXPECT_EQ(levels, std::vector<std::string>{}) << "a timer of a closed connection";
    EXPECT_EQ(events, "");
    EXPECT_FALSE(isBusy());
}
