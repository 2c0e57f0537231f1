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

/// The connection that stands for one program in the application: checked in from the beginning to
/// the end. Never waits for the application. The run loop's thread only.
class AppConnection {
  public:
    class Listener {
      public:
        virtual ~Listener() = default;

        /// A volume or mute for this very program: the mute is 0 or 1, the volume any number. Or
        /// that the list of the programs that get no item is another.
        virtual void commandArrived(const MVCommConsoleMessage& command) = 0;

        /// The application has gone. The connection may be destroyed in here.
        virtual void connectionLost() = 0;
    };

    /// Connects to the application and checks `program` in. Null when no application of ours, or of
    /// the administrator, answers.
    [[nodiscard]] static std::unique_ptr<AppConnection>
    open(platform::RunLoop& loop, const ProgramProcess& program, Listener& listener);

    /// Whether `program` is the very process that serves the socket.
    [[nodiscard]] static bool isServedBy(const ProgramProcess& program);

    ~AppConnection();
    AppConnection(const AppConnection&) = delete;
    AppConnection& operator=(const AppConnection&) = delete;

    /// Tells how loud the program is, 0 to 1. Lost if the application doesn't read; the next one
    /// is as good.
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
