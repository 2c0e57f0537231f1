#pragma once

#include "plugin/PipeWireHandles.h"

#include <cstdint>
#include <memory>

class AudioServer;

namespace platform {
class RunLoop;
class Timer;
} // namespace platform

/// Changes one program's node over a connection of its own, made when it is first needed and closed
/// when nothing has been changed for a while. The server takes nothing more from a connection until
/// the program has answered a change: one that is stopped, or frozen, would hold up all the others.
/// The run loop's thread only; must go before the server's connection does.
class NodeWriter {
  public:
    NodeWriter(platform::RunLoop& loop, const AudioServer& server, std::uint32_t node);
    ~NodeWriter();
    NodeWriter(const NodeWriter&) = delete;
    NodeWriter& operator=(const NodeWriter&) = delete;

    /// The node, for a change that is made at once; not to be kept. Null when the server takes no
    /// connection.
    pw_node* node();

    /// Asks the server to answer when all that was changed so far has been done.
    void ask();

    /// Whether it has answered; also when there is no connection.
    bool isAnswered() const noexcept { return connection_ == nullptr || answered_; }

  private:
    struct Connection;

    void rest();
    void answered(int sequence);
    void close();

    static const pw_core_events coreEvents;

    const AudioServer& server_;
    const std::uint32_t id_;
    const std::uint64_t serial_; // the node's, or that of an object which came later
    int question_ = 0;
    bool answered_ = false;
    bool closing_ = false;
    bool broken_ = false;
    std::unique_ptr<Connection> connection_;
    const std::unique_ptr<platform::Timer> pause_;
};
