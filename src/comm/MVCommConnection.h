#pragma once

#include "comm/MVCommConnectionProcess.h"
#include "comm/MVCommFaultLog.h"
#include "comm/MVCommLogLimit.h"
#include "comm/MVCommMessages.h"

#include <memory>

namespace platform {
class DataSocket;
class RunLoop;
class RunLoopSource;
class Timer;
} // namespace platform

/// The sending side of one connection, shared by the connection and the sends in progress, so that
/// the descriptor stays open until the last send, even if the connection is destroyed. Used by one
/// thread at a time.
class MVCommSender {
  public:
    explicit MVCommSender(std::shared_ptr<const platform::DataSocket> socket) noexcept
        : socket_(std::move(socket)) {}

    /// Writes the message without waiting. A failure is a line "send failed: …" in the system log,
    /// at most one a second.
    void send(const MVCommConsoleMessage& message) noexcept;

  private:
    const std::shared_ptr<const platform::DataSocket> socket_;
    MVCommLogLimit failureLimit_;
};

/// One connected plug-in: its socket with the source that reads it, and the record of its program.
/// Main thread; the process record is guarded by the server's connections lock as well, since
/// other threads may list it.
class MVCommConnection {
  public:
    /// Takes over socket and source; the source must watch the socket, on `loop`.
    MVCommConnection(platform::RunLoop& loop, std::shared_ptr<platform::DataSocket> socket,
                     std::unique_ptr<platform::RunLoopSource> source);

    /// Does what shutdown() does; a pending activity reset is cancelled.
    ~MVCommConnection();
    MVCommConnection(const MVCommConnection&) = delete;
    MVCommConnection& operator=(const MVCommConnection&) = delete;

    /// Null after shutdown().
    [[nodiscard]] const platform::DataSocket* socket() const noexcept { return socket_.get(); }

    MVCommConnectionProcess& process() noexcept { return process_; }
    [[nodiscard]] const MVCommConnectionProcess& process() const noexcept { return process_; }

    /// Ask this before each log line about an error of the plug-in.
    MVCommFaultLog& faultLog() noexcept { return faultLog_; }

    /// The connection's activity reset: pending while the timer is active. One timer is reused for
    /// the connection's whole life, so that postponing the reset allocates nothing.
    [[nodiscard]] platform::Timer* resetActivityTimer() const noexcept {
        return resetActivityTimer_.get();
    }
    void setResetActivityTimer(std::unique_ptr<platform::Timer> timer);

    /// Null after shutdown().
    [[nodiscard]] const std::shared_ptr<MVCommSender>& sender() const noexcept { return sender_; }

    /// Stops reading and ends the connection; the peer sees the end at once, and the descriptor is
    /// closed as soon as no send or delivery uses it. Later calls do nothing. A pending activity
    /// reset stays pending.
    void shutdown() noexcept;

  private:
    std::shared_ptr<platform::DataSocket> socket_;
    std::unique_ptr<platform::RunLoopSource> source_;
    std::shared_ptr<MVCommSender> sender_;
    MVCommConnectionProcess process_;
    MVCommFaultLog faultLog_; // names the process
    std::unique_ptr<platform::Timer> resetActivityTimer_;
};
