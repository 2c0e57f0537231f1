#pragma once

#include "comm/MVCommMessages.h"
#include "platform/base/MonotonicClock.h"
#include "platform/loop/Timer.h"

#include <cstdint>
#include <vector>

class MVComm;

/// Sends commands to the plug-ins so that the last one for a program always takes effect. The
/// servers drop a command that they have sent a moment ago, even if another one was sent in
/// between: of a volume that goes to 50, 51 and back to 50 percent they drop the last step.
/// Commands that may have been dropped are sent again as soon as the servers accept them. The
/// thread's run loop, and no other thread.
class PluginCommands {
  public:
    /// `comm` must outlive the object.
    explicit PluginCommands(MVComm& comm);

    void setVolume(std::uint32_t pid, int percent) { send(kMVCommSetVolume, pid, percent); }
    void setMute(std::uint32_t pid, bool muted) { send(kMVCommSetMute, pid, muted ? 1 : 0); }

    /// The ignore list has changed, and has been copied to where plug-ins read it.
    void ignoreListChanged() { send(kMVCommIgnoreListChanged, 0, 0); }

  private:
    struct Command {
        std::int32_t type;
        std::uint32_t pid;
        int value;
        platform::MonotonicClock::time_point sent;

        [[nodiscard]] bool isAbout(const Command& other) const {
            return type == other.type && pid == other.pid;
        }
    };

    void send(std::int32_t type, std::uint32_t pid, int value);
    void sendNow(const Command& command);
    bool mayBeDropped(const Command& command) const;
    bool isToBeRepeated(const Command& command) const;
    void repeat();

    MVComm& comm_;
    std::vector<Command> recent_;  // the oldest first
    std::vector<Command> dropped_; // possibly dropped; the last ones for their programs
    platform::Timer timer_;
};
