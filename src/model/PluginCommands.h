#pragma once

#include "comm/MVCommMessages.h"
#include "platform/base/MonotonicClock.h"
#include "platform/loop/Timer.h"

#include <cstdint>
#include <vector>

class MVComm;

/// Sends commands to the plug-ins so that the last one for a program always counts. The servers
/// drop what they have sent a moment ago, also when something else has been said since: of a volume
/// that goes to 50, 51 and back to 50 percent the last step. What they may have dropped is sent
/// once more when they do not drop it any longer. The thread's run loop, and no other thread.
class PluginCommands {
  public:
    /// `comm` must outlive the object.
    explicit PluginCommands(MVComm& comm);

    void setVolume(std::uint32_t pid, int percent) { send(kMVCommSetVolume, pid, percent); }
    void setMute(std::uint32_t pid, bool muted) { send(kMVCommSetMute, pid, muted ? 1 : 0); }

    /// The list of ignored programs is another, and lies where plug-ins read it.
    void ignoreListChanged() { send(kMVCommIgnoreListChanged, 0, 0); }

  private:
    struct Command {
        std::int32_t type;
        std::uint32_t pid;
        int value;
        platform::MonotonicClock::time_point sent;

        bool isAbout(const Command& other) const { return type == other.type && pid == other.pid; }
    };

    void send(std::int32_t type, std::uint32_t pid, int value);
    void sendNow(const Command& command);
    bool mayBeDropped(const Command& command) const;
    bool isToBeRepeated(const Command& command) const;
    void repeat();

    MVComm& comm_;
    std::vector<Command> recent_;  // the oldest first
    std::vector<Command> dropped_; // perhaps; the last ones for their programs
    platform::Timer timer_;
};
