#pragma once

#include "comm/MVCommMessages.h"
#include "plugin/connection/CommandReader.h"

#include <cstdint>
#include <memory>
#include <span>

namespace platform {
class DataSocket;
class RunLoop;
class RunLoopSource;
} // namespace platform

struct ProgramProcess;

/// The connection of one program to the application, checked in during its whole life. Never waits
/// for the application. The run loop's thread only.
class AppConnection {
  public:
    class Listener {
      public:
        virtual ~Listener() = default;

        /// A volume or mute command for this program: the mute is 0 or 1, the volume any number. Or
        /// that the list of the programs that get no item is another.
        virtual void commandArrived(const MVCommConsoleMessage& command) = 0;

        /// The application has disconnected. The handler may destroy the connection.
        virtual void connectionLost() = 0;
    };

    /// Connects to the application and checks `program` in. Null if no application of our user, or
    /// of root, accepts.
    [[nodiscard]] static std::unique_ptr<AppConnection>
    open(platform::RunLoop& loop, const ProgramProcess& program, Listener& listener);

    /// Whether `program` is the process that serves the socket.
    [[nodiscard]] static bool isServedBy(const ProgramProcess& program);

    ~AppConnection();
    AppConnection(const AppConnection&) = delete;
    AppConnection& operator=(const AppConnection&) = delete;

    /// Sends the program's level, 0 to 1. Dropped if the application doesn't read, since the next
    /// one follows soon.
    void sendLevel(float level) noexcept;

  private:
    AppConnection(std::uint32_t process, Listener& listener) noexcept;
    bool start(platform::RunLoop& loop, const ProgramProcess& program);
    void delivered(std::span<const std::byte> bytes);
    void take(const MVCommConsoleMessage& command);

    const std::uint32_t process_;
    Listener& listener_;
    CommandReader commands_;
    std::shared_ptr<platform::DataSocket> socket_;
    std::unique_ptr<platform::RunLoopSource> source_; // goes before the socket
};
