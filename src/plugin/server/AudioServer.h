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

/// The connection to the sound server, reconnected whenever it breaks; the server may start later
/// than we do. PipeWire's own loop is a source of the run loop, on whose thread this and all
/// objects created through it must be used.
class AudioServer {
  public:
    /// Called from the run loop, never from within start().
    class Listener {
      public:
        virtual ~Listener() = default;
        virtual void serverConnected() = 0;

        /// The connection is about to be dropped: destroy everything created through core() and
        /// registry() before returning.
        virtual void serverLost() = 0;
        virtual void globalAdded(const AudioGlobal& global) = 0;
        virtual void globalRemoved(std::uint32_t id) = 0;
    };

    /// Throws std::runtime_error if the PipeWire library cannot be used.
    AudioServer(platform::RunLoop& loop, Listener& listener);

    /// Drops the connection without calling the listener.
    ~AudioServer();
    AudioServer(const AudioServer&) = delete;
    AudioServer& operator=(const AudioServer&) = delete;

    /// Starts to connect at the next turn of the loop.
    void start();

    /// Null while there is no connection.
    [[nodiscard]] pw_core* core() const noexcept;
    [[nodiscard]] pw_registry* registry() const noexcept;

    /// Whether all objects that existed when we connected have been added. Later objects are new.
    [[nodiscard]] bool hasListedAll() const noexcept;

    /// Opens another connection to the server. The caller closes it before this object is
    /// destroyed, and is not notified if it is lost. Null with errno set on failure.
    [[nodiscard]] pw_core* openCore() const;

    /// Handles the server's events, and waits up to half a second, until the server has processed
    /// all requests so far and `condition` holds. The server drops unread requests when a
    /// connection ends.
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
