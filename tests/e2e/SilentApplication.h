#pragma once

#include "comm/MVCommMessages.h"
#include "comm/MVCommSocketPath.h"
#include "platform/base/FileDescriptor.h"
#include "platform/loop/UnixSocket.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <vector>

/// A listening socket in the application's place that does only what a test tells it.
class SilentApplication {
  public:
    /// Who serves the socket, for those who connect. Another than ourselves takes root.
    enum class Owner { self, nobody };

    explicit SilentApplication(Owner owner = Owner::self) : socket_(platform::makeUnixSocket()) {
        std::filesystem::remove(MVCommMainSocketPath());
        EXPECT_TRUE(platform::bindUnixSocket(socket_.get(), MVCommMainSocketPath()));
        // Whoever listens is the peer. The call without the library's changes this thread only.
        std::thread([this, owner] {
            constexpr long kept = -1;
            constexpr long nobody = 65534;
            if (owner == Owner::nobody) {
                EXPECT_EQ(::syscall(SYS_setresuid, kept, nobody, kept), 0);
            }
            EXPECT_EQ(::listen(socket_.get(), 16), 0);
        }).join();
    }
    ~SilentApplication() { std::filesystem::remove(MVCommMainSocketPath()); }
    SilentApplication(const SilentApplication&) = delete;
    SilentApplication& operator=(const SilentApplication&) = delete;

    /// The next connection; waits for it.
    platform::FileDescriptor accept(std::chrono::milliseconds bound = support::patience) const {
        platform::FileDescriptor connection;
        EXPECT_TRUE(support::waitUntil(
            [&] {
                connection.reset(
                    ::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
                return static_cast<bool>(connection);
            },
            bound));
        return connection;
    }

    /// The connection of that process' program, which has checked in; waits for it and drops
    /// others.
    platform::FileDescriptor
    acceptProgram(pid_t process, std::chrono::milliseconds bound = support::patience) const {
        for (;;) {
            platform::FileDescriptor connection = accept(bound);
            MVCommCheckinMessage checkin{};
            if (!connection || !support::waitUntil([&] {
                    return ::recv(connection.get(), &checkin, sizeof checkin, 0) == sizeof checkin;
                }))
                return {};
            if (checkin.pid == static_cast<std::uint32_t>(process))
                return connection;
        }
    }

  private:
    const platform::FileDescriptor socket_;
};

/// The levels among what has come; does not wait.
inline std::vector<float> receivedLevels(const platform::FileDescriptor& connection) {
    std::vector<float> levels;
    MVCommActivityMessage message{};
    while (::recv(connection.get(), &message, sizeof message, 0) == sizeof message)
        levels.push_back(message.level);
    return levels;
}
