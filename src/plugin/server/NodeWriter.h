#pragma once

#include "plugin/server/PipeWireHandles.h"
#include "plugin/server/WriteLanes.h"

#include <cstdint>
#include <map>
#include <memory>

class AudioGraph;
class AudioServer;

namespace platform {
class RunLoop;
class Timer;
} // namespace platform

/// Changes the programs' streams, over connections that are made when they are needed and closed
/// again when they are of no use; see WriteLanes. The run loop's thread only.
class NodeWriter : private WriteLanes::Transport {
  public:
    /// `graph` is that of the server, with all nodes that are to be changed.
    NodeWriter(platform::RunLoop& loop, const AudioServer& server, const AudioGraph& graph);
    ~NodeWriter() override;
    NodeWriter(const NodeWriter&) = delete;
    NodeWriter& operator=(const NodeWriter&) = delete;

    /// The server is there: a connection is made, so that it is at hand.
    void prepare();

    /// Changes the node, at once unless an earlier change of it is still on its way. Lost, after a
    /// line in the log, when the server takes no connection.
    void write(std::uint32_t node, const VolumeWrite& change);

    /// The node has gone. To be told before another one can have its number.
    void forget(std::uint32_t node);

    /// Closes all connections; must come before the server's own one is dropped.
    void clear();

    /// Whether all has been done but what waits for programs that do not answer. Sees to it that
    /// these hold up nobody else; for a caller that does not let the run loop turn.
    bool settle();

  private:
    struct Connection;

    bool open(WriteLanes::Lane lane) override;
    void close(WriteLanes::Lane lane) override;
    bool knows(WriteLanes::Lane lane, std::uint32_t node) const override;
    int send(WriteLanes::Lane lane, std::uint32_t node, const VolumeWrite& change) override;
    void schedule();

    static const pw_core_events coreEvents;
    static const pw_registry_events registryEvents;

    const AudioServer& server_;
    const AudioGraph& graph_;
    std::map<WriteLanes::Lane, std::unique_ptr<Connection>> connections_;
    WriteLanes lanes_{*this};
    const std::unique_ptr<platform::Timer> timer_;
};
