#pragma once

#include "platform/base/FileDescriptor.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace bench {

inline constexpr std::uint32_t firstPid = 1U
                                          << 30U; ///< of the plug-ins; no process has such a number

/// The other end of the wire: many connections that say what real plug-ins say, each message in one
/// write. Throws std::runtime_error when something does not go to the kernel whole.
class WirePlugins {
  public:
    WirePlugins() = default;

    /// Connects them all; `serve` has the server accept, on the same thread.
    WirePlugins(const std::string& path, std::size_t count, const std::function<void()>& serve);

    /// Connects them all and checks each one in, as fast as the server accepts. For a thread of its
    /// own.
    void checkIn(const std::string& path, std::size_t count);

    /// Each plug-in sends `count` messages.
    void sendActivity(std::size_t count);

    /// One message after the other goes to one plug-in after the other, with an interval between
    /// and never before the last one was `received`. For a thread of its own.
    void sendPaced(std::size_t count, std::chrono::microseconds interval,
                   const std::atomic<std::size_t>& received);

    /// Takes the command that has been sent to all from each, once the last one has it. Throws when
    /// one has none or another one.
    void takeCommand(std::int32_t value);

    /// Of all messages so far. Sums are exact.
    std::size_t sent() const noexcept { return sent_; }
    double sentLevels() const noexcept { return sentLevels_; }

  private:
    void sendOne(std::size_t plugin);

    std::vector<platform::FileDescriptor> sockets_;
    std::size_t sent_ = 0;
    double sentLevels_ = 0;
};

} // namespace bench
