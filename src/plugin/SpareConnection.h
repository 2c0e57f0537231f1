#pragma once

#include "plugin/PipeWireHandles.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace platform {
class RunLoop;
class Timer;
} // namespace platform

/// A connection to the sound server that is at hand when one is needed at once: on a busy machine
/// the server may take longer to accept one than a new stream takes to be heard. Another is opened
/// a while after it has been taken. The run loop's thread only.
class SpareConnection {
  public:
    /// `open` makes a connection; null when it cannot.
    SpareConnection(platform::RunLoop& loop, std::function<pw_core*()> open);
    ~SpareConnection();
    SpareConnection(const SpareConnection&) = delete;
    SpareConnection& operator=(const SpareConnection&) = delete;

    /// Has one opened soon. To be called when the server is there.
    void prepare();

    /// The connection, now the caller's, for something to be done to the object with this
    /// object.serial. Null when none is at hand that the server has told of the object: it refuses
    /// what a connection asks for an object that is too new for it.
    pw_core* take(std::uint64_t serial);

    /// Drops it. The server has gone.
    void close();

  private:
    struct Connection;

    void open();
    void failed(std::uint32_t id, int result);

    static const pw_core_events coreEvents;
    static const pw_registry_events registryEvents;

    const std::function<pw_core*()> open_;
    std::unique_ptr<Connection> connection_;
    const std::unique_ptr<platform::Timer> opening_;
};
