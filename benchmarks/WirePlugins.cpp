#include "WirePlugins.h"

#include "comm/MVCommMessages.h"
#include "platform/loop/UnixSocket.h"
#include "support/ScriptedPlugin.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <thread>

using platform::FileDescriptor;

namespace bench {

namespace {

constexpr std::chrono::seconds patience{10};

[[noreturn]] void fail(const char* what) {
    throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

/// Waits while the server's backlog is full.
FileDescriptor connectWaiting(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        throw std::runtime_error("too long: " + path);
    path.copy(address.sun_path, path.size());
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const timeval limit{patience.count(), 0};
    if (!socket || ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit) != 0 ||
        ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        fail("a plug-in cannot connect");
    return socket;
}

void sendWhole(const FileDescriptor& socket, const void* bytes, std::size_t size) {
    if (::send(socket.get(), bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT) !=
        static_cast<ssize_t>(size))
        fail("a plug-in cannot send");
}

} // namespace

WirePlugins::WirePlugins(const std::string& path, std::size_t count,
                         const std::function<void()>& serve) {
    while (sockets_.size() < count) {
        FileDescriptor socket = platform::connectUnixSocket(path);
        if (socket)
            sockets_.push_back(std::move(socket));
        else if (errno != EAGAIN)
            fail("a plug-in cannot connect");
        else
            serve();
    }
    serve();
}

void WirePlugins::checkIn(const std::string& path, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::string id = std::to_string(i);
        const std::string bytes = support::ScriptedPlugin::checkinBytes(
            firstPid + static_cast<std::uint32_t>(i), "Music Player " + id,
            "/usr/lib/music-player/bin/player-" + id);
        sockets_.push_back(connectWaiting(path));
        sendWhole(sockets_.back(), bytes.data(), bytes.size());
    }
}

void WirePlugins::sendActivity(std::size_t count) {
    for (std::size_t plugin = 0; plugin < sockets_.size(); ++plugin) {
        for (std::size_t i = 0; i < count; ++i)
            sendOne(plugin);
    }
}

void WirePlugins::sendPaced(std::size_t count, std::chrono::microseconds interval,
                            const std::atomic<std::size_t>& received) {
    ::prctl(PR_SET_TIMERSLACK, 1UL);
    for (std::size_t i = 0; i < count; ++i) {
        const auto end = std::chrono::steady_clock::now() + patience;
        do {
            std::this_thread::sleep_for(interval);
            if (std::chrono::steady_clock::now() > end)
                throw std::runtime_error("a message has not come");
        } while (received.load(std::memory_order_acquire) < i);
        sendOne(i % sockets_.size());
    }
}

void WirePlugins::sendOne(std::size_t plugin) {
    constexpr std::size_t steps = 8;
    const float level = static_cast<float>(sent_ % steps + 1) / static_cast<float>(steps);
    const MVCommActivityMessage message{kMVCommActivity,
                                        firstPid + static_cast<std::uint32_t>(plugin), level};
    sendWhole(sockets_[plugin], &message, sizeof message);
    ++sent_;
    sentLevels_ += static_cast<double>(level);
}

void WirePlugins::takeCommand(std::int32_t value) {
    pollfd last{sockets_.back().get(), POLLIN, 0};
    if (::poll(&last, 1, static_cast<int>(std::chrono::milliseconds(patience).count())) != 1)
        throw std::runtime_error("a command does not come");
    for (const FileDescriptor& socket : sockets_) {
        MVCommConsoleMessage command{};
        if (::recv(socket.get(), &command, sizeof command, MSG_DONTWAIT) !=
                ssize_t{sizeof command} ||
            command.value != value)
            throw std::runtime_error("a plug-in did not get the command");
    }
}

} // namespace bench
