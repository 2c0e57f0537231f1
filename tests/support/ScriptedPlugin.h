#pragma once

#include "comm/MVCommMessages.h"
#include "platform/base/FileDescriptor.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace support {

/// A plug-in whose every byte the test decides: one connection to the application's socket.
class ScriptedPlugin {
  public:
    /// Connects; fails the test when nobody listens at `path`.
    explicit ScriptedPlugin(const std::string& path);

    /// Each in one write. Names and paths may fill their fields without a NUL.
    void checkIn(std::uint32_t pid, std::string_view name, std::string_view path = "/usr/bin/x");
    void reportLevel(std::uint32_t pid, float level);
    void sendBytes(std::string_view bytes);

    /// The bytes of messages, to be joined into one write.
    static std::string checkinBytes(std::uint32_t pid, std::string_view name,
                                    std::string_view path = "/usr/bin/x");
    static std::string activityBytes(std::uint32_t pid, float level);

    /// The commands that have arrived since the last call; does not wait.
    std::vector<MVCommConsoleMessage> takeCommands();

    /// Waits until a command has arrived, some seconds at most. False when none has.
    bool awaitCommand();

    /// Whether the application has ended the connection. Drops commands that have not been taken.
    bool isEnded();

    void disconnect() { socket_.reset(); }

  private:
    platform::FileDescriptor socket_;
};

} // namespace support
