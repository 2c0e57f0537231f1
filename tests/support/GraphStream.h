#pragma once

#include <functional>
#include <memory>
#include <pipewire/stream.h>
#include <span>

namespace support {

/// A stream of this process in the audio graph, as close to it as a program gets: stereo, at the
/// graph's own rate, served on the data thread in the cycle itself. The thread that made it only.
class GraphStream {
  public:
    /// Gets the samples of a cycle, both channels in turn: to fill when the stream plays, to read
    /// when it listens. On the data thread; must not wait or allocate.
    using Work = std::function<void(std::span<float>)>;

    /// Plays to the default sink, from setActive() on. Throws std::runtime_error when there is no
    /// sound server.
    static std::unique_ptr<GraphStream> player(Work work);

    /// Listens to what the default sink plays, at once.
    static std::unique_ptr<GraphStream> listener(Work work);

    ~GraphStream();
    GraphStream(const GraphStream&) = delete;
    GraphStream& operator=(const GraphStream&) = delete;

    /// Plays or pauses.
    void setActive(bool active);

  private:
    class Server;

    enum class Kind { player, listener };

    GraphStream(Kind kind, Work work);
    void connect();
    void process();

    static const pw_stream_events streamEvents;

    const Kind kind_;
    const Work work_;
    const std::unique_ptr<Server> server_;
    pw_stream* stream_ = nullptr;
    spa_hook hook_{}; // goes with the stream
};

} // namespace support
