#include "platform/loop/Socket.h"
#include "platform/loop/ReadBuffer.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/RunLoopSource.h"
#include "platform/loop/UnixSocket.h"
#include "support/ManualClock.h"
#include "support/PrivateFolder.h"
#include "support/SystemLogRecorder.h"

#include "support/NoDescriptorsLeft.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

using platform::AcceptSocket;
using platform::DataSocket;
using platform::FileDescriptor;

namespace {

std::pair<FileDescriptor, FileDescriptor> connectedPair() {
    std::array<int, 2> ends{};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

void enlargeSendBuffer(int descriptor, int size) {
    // Privileged processes may pass the system's limit; others get as much as it allows.
    if (::setsockopt(descriptor, SOL_SOCKET, SO_SNDBUFFORCE, &size, sizeof size) != 0) {
        ASSERT_EQ(::setsockopt(descriptor, SOL_SOCKET, SO_SNDBUF, &size, sizeof size), 0);
    }
}

/// A socket that collects the sizes of its deliveries.
struct Receiver {
    explicit Receiver(platform::RunLoop& loop, FileDescriptor end)
        : socket(DataSocket::create(std::move(end),
                                    [this](DataSocket&, std::span<const std::byte> bytes) {
                                        sizes.push_back(bytes.size());
                                    }))
        , source(socket->makeSource(loop)) {}

    std::vector<std::size_t> sizes;
    std::shared_ptr<DataSocket> socket;
    std::unique_ptr<platform::RunLoopSource> source;
};

} // namespace

TEST(DataSocket, DeliversEverythingQueuedInOnePieceAndThenTheEnd) {
    platform::RunLoop loop;
    auto [mine, theirs] = connectedPair();
    Receiver receiver(loop, std::move(mine));
    const std::string message(1160, 'x');
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(::send(theirs.get(), message.data(), message.size(), 0), 1160);
    theirs.reset();

    loop.turn();
    EXPECT_EQ(receiver.sizes, (std::vector<std::size_t>{3480}));
    loop.turn();
    EXPECT_EQ(receiver.sizes, (std::vector<std::size_t>{3480, 0}));
}

TEST(DataSocket, AQueueLargerThanTheUsualBufferIsStillDeliveredInOnePiece) {
    platform::RunLoop loop;
    auto [mine, theirs] = connectedPair();
    enlargeSendBuffer(theirs.get(), 8 * 1024 * 1024);
    Receiver receiver(loop, std::move(mine));
    const std::string message(1160, 'x');
    std::size_t queued = 0;
    while (::send(theirs.get(), message.data(), message.size(), MSG_DONTWAIT) == 1160)
        queued += message.size();
    if (::geteuid() == 0) {
        ASSERT_GT(queued, platform::ReadBuffer::usualSize);
    }

    loop.turn();
    EXPECT_EQ(receiver.sizes, (std::vector<std::size_t>{queued}));
}

TEST(DataSocket, AHandlerMayEndItsConnectionAndDropTheSocket) {
    platform::RunLoop loop;
    auto [mine, theirs] = connectedPair();
    std::shared_ptr<DataSocket> socket;
    std::unique_ptr<platform::RunLoopSource> source;
    socket = DataSocket::create(std::move(mine), [&](DataSocket&, std::span<const std::byte>) {
        source.reset();
        socket->invalidate();
        socket.reset();
    });
    source = socket->makeSource(loop);
    ASSERT_EQ(::send(theirs.get(), "x", 1, 0), 1);
    loop.turn();
    EXPECT_EQ(socket, nullptr);
    char byte = 0;
    EXPECT_EQ(::recv(theirs.get(), &byte, 1, MSG_DONTWAIT), 0) << "the peer sees the end";
}

TEST(DataSocket, BytesOfAnOuterDeliverySurviveANestedOne) {
    platform::RunLoop loop;
    auto [mine, theirs] = connectedPair();
    auto otherPair = connectedPair();
    Receiver other(loop, std::move(otherPair.first));
    std::string seen;
    const auto socket =
        DataSocket::create(std::move(mine), [&](DataSocket&, std::span<const std::byte> bytes) {
            ASSERT_EQ(::send(otherPair.second.get(), "zzzz", 4, 0), 4);
            loop.turn();
            seen.assign(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        });
    const auto source = socket->makeSource(loop);
    ASSERT_EQ(::send(theirs.get(), "aaaa", 4, 0), 4);
    loop.turn();
    EXPECT_EQ(seen, "aaaa");
    EXPECT_EQ(other.sizes, (std::vector<std::size_t>{4}));
}

TEST(DataSocket, SendingNeverWaitsAndNeverSignals) {
    auto [mine, theirs] = connectedPair();
    const auto socket =
        DataSocket::create(std::move(mine), [](DataSocket&, std::span<const std::byte>) {});
    const std::array<std::byte, 16> message{};
    while (socket->send(message)) {
    }
    EXPECT_EQ(errno, EAGAIN);
    theirs.reset();
    EXPECT_FALSE(socket->send(message));
    EXPECT_EQ(errno, EPIPE);
}

TEST(AcceptSocket, RestsWhileThereAreNoDescriptorsAndThenGoesOn) {
    support::ManualClock clock;
    support::SystemLogRecorder log;
    const support::PrivateFolder folder;
    platform::RunLoop loop;
    const std::string path = folder.path() / "socket";
    FileDescriptor listening = platform::makeUnixSocket();
    ASSERT_TRUE(platform::bindUnixSocket(listening.get(), path));
    ASSERT_EQ(::listen(listening.get(), 5), 0);
    int accepted = 0;
    const auto server =
        AcceptSocket::create(std::move(listening), [&](AcceptSocket&, FileDescriptor connection) {
            EXPECT_TRUE(connection);
            ++accepted;
        });
    ASSERT_TRUE(server->schedule(loop));
    const FileDescriptor client = platform::connectUnixSocket(path);
    ASSERT_TRUE(client);
    {
        const support::NoDescriptorsLeft limit;
        loop.turn();
        loop.turn();
    }
    EXPECT_EQ(log.count("Accepting connections rests"), 1U);
    EXPECT_EQ(accepted, 0);
    clock.advance(std::chrono::seconds(1));
    loop.turn();
    loop.turn();
    EXPECT_EQ(accepted, 1);
}

TEST(AcceptSocket, RefusesADescriptorThatDoesNotListen) {
    EXPECT_EQ(AcceptSocket::create(platform::makeUnixSocket(), {}), nullptr);
    EXPECT_EQ(errno, EINVAL);
}

TEST(UnixSocketPath, BindsAndConnectsWhateverTheLength) {
    for (const std::size_t length : {0U, 107U, 108U, 200U, 253U}) {
        const support::PrivateFolder folder;
        std::string path = folder.path().string() + "/";
        path.resize(std::max(path.size() + 1, length), 's');
        const FileDescriptor server = platform::makeUnixSocket();
        ASSERT_TRUE(platform::bindUnixSocket(server.get(), path)) << std::strerror(errno);
        ASSERT_EQ(::listen(server.get(), 1), 0);
        EXPECT_TRUE(platform::connectUnixSocket(path)) << std::strerror(errno);
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1)
            << "nothing but the socket is left in the folder";
        EXPECT_FALSE(platform::bindUnixSocket(platform::makeUnixSocket().get(), path));
        EXPECT_EQ(errno, EADDRINUSE);
    }
}
