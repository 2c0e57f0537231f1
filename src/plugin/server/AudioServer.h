#pragma once

#include "plugin/server/AudioGraph.h"
#include "plugin/server/Backoff.h"
#include "plugin/server/PipeWireHandles.h"

#include <functional>
#include <memory>

namespace platform {
class RunLoop;
class RunLoopSource;
class Timer;
} // namespace platform

/// The connection to the sound server, made again whenever it breaks; the server may also start
/// later than we do. PipeWire's own loop is a source of the run loop, whose thread is the only one
/// to use this and every object made through it.
class AudioServer {
  public:
    /// Called from the run loop, never from within start().
    class Listener {
      public:
        virtual ~Listener() = default;
        virtual void serverConnected() = 0;

        /// The connection is about to be dropped: everything made through core() and registry()
        /// must be gone when this returns.
        virtual void serverLost() = 0;
        virtual void globalAdded(const AudioGlobal& global) = 0;
        virtual void globalRemoved(std::uint32_t id) = 0;
    };

    /// Throws std::runtime_error when the PipeWire library cannot be used at all.
    AudioServer(platform::RunLoop& loop, Listener& listener);

    /// Drops the connection without telling the listener.
    ~AudioServer();
    AudioServer(const AudioServer&) = delete;
    AudioServer& operator=(const AudioServer&) = delete;

    /// Begins to connect, at the next turn of the loop.
    void start();

    /// Null while there is no connection.
    pw_core* core() const noexcept;
    pw_registry* registry() const noexcept;

    /// Whether every object that the server had when we connected to it has been added. What is
    /// added from then on is new.
    bool hasListedAll() const noexcept;

    /// Another connection to the server, which the caller closes before this object goes; whoever
    /// has it is not told of its end. Null with errno set on failure.
    pw_core* openCore() const;

    /// Serves the server's events until it has taken all that it was asked for so far and
    /// `condition` holds, half a second at most, waiting meanwhile. It drops what it has not read
    /// when a connection ends.
    void serveUntil(const std::function<bool()>& condition);

  private:
    class Library;
    struct Loop;
    struct Connection;

    void connect();
    bool openConnection();
    void drop();
    void serveEvents(std::chrono::milliseconds wait);
    void failed(std::uint32_t id, int result, const char* message);

    static const pw_core_events coreEvents;
    static const pw_registry_events registryEvents;

    Listener& listener_;
    const std::unique_ptr<Library> library_;
    const std::unique_ptr<Loop> loop_;
    std::unique_ptr<platform::RunLoopSource> source_;
    std::unique_ptr<Connection> connection_;
    Backoff pauses_;
    bool absenceLogged_ = false;
    const std::unique_ptr<platform::Timer> retry_;
    const std::unique_ptr<platform::Timer> loss_; // not from inside the connection's own events
};
