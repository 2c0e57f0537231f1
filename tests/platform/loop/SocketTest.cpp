#include "platform/loop/Socket.h"
#include "platform/loop/ReadBuffer.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/RunLoopSource.h"
#include "platform/loop/UnixSocket.h"
#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string>
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

TEST(DataSocket, DeliversAQueueLargerThanTheUsualBufferInOnePieceAndThenTheEnd) {
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

    theirs.reset();
    loop.turn();
    EXPECT_EQ(receiver.sizes, (std::vector<std::size_t>{queued}));
    loop.turn();
    EXPECT_EQ(receiver.sizes, (std::vector<std::size_t>{queued, 0}));
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
