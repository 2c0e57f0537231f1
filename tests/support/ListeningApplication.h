#pragma once

#include "comm/MVComm.h"
#include "comm/MVCommMessages.h"
#include "platform/base/MonotonicClock.h"

#include <QString>

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace support {

/// The application as plug-ins see it, without a window: serves the main socket, records what
/// arrives, and sends the commands that a test asks for. One at a time; the main thread with a run
/// loop. Quits when it goes.
class ListeningApplication {
  public:
    struct Level {
        platform::MonotonicClock::time_point arrived;
        float level;
    };

    /// Begins to listen. Fails the test when the socket cannot be served.
    ListeningApplication();
    ~ListeningApplication();
    ListeningApplication(const ListeningApplication&) = delete;
    ListeningApplication& operator=(const ListeningApplication&) = delete;

    /// The programs that have checked in, without the one of the notification sounds.
    QList<MVCommConnectionProcess> programs() const;

    /// The only one of that name, also that of the notification sounds; nothing when there is none
    /// or more than one.
    std::optional<MVCommConnectionProcess> program(const QString& name) const;

    /// What arrived for the pid, zeros that the server made included, since the start or
    /// forgetLevels().
    const std::vector<Level>& levelsOf(std::uint32_t pid) { return levels_[pid]; }
    void forgetLevels() { levels_.clear(); }

    void setVolume(std::uint32_t pid, int percent) { send(kMVCommSetVolume, pid, percent); }
    void setMute(std::uint32_t pid, bool muted) { send(kMVCommSetMute, pid, muted ? 1 : 0); }
    void send(std::int32_t type, std::uint32_t pid, std::int32_t value);

  private:
    static void record(const MVCommActivityMessage* message);

    MVComm comm_;
    std::map<std::uint32_t, std::vector<Level>> levels_;

    static ListeningApplication* current_;
};

} // namespace support
