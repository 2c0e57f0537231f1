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

/// Changes the programs' streams, over connections that are opened when needed and closed when
/// idle; see WriteLanes. The run loop's thread only.
class NodeWriter : private WriteLanes::Transport {
  public:
    /// `graph` is that of the server, with all nodes that may be changed.
    NodeWriter(platform::RunLoop& loop, const AudioServer& server, const AudioGraph& graph);
    ~NodeWriter() override;
    NodeWriter(const NodeWriter&) = delete;
    NodeWriter& operator=(const NodeWriter&) = delete;

    /// Call this when the server is connected: opens a connection in advance.
    void prepare();

    /// Changes the node, at once unless an earlier change of it is in flight. Lost, after a line in
    /// the log, if the server accepts no connection.
    void write(std::uint32_t node, const VolumeWrite& change);

    /// The node no longer exists. Call this before its id can be reused.
    void forget(std::uint32_t node);

    /// Closes all connections; call it before the server's own one is dropped.
    void clear();

    /// Whether all changes are done except those of programs that do not answer. Isolates these;
    /// for a caller that does not run the loop.
    [[nodiscard]] bool settle();

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
