#pragma once

#include "comm/MVCommCallbacks.h"
#include "platform/base/FileDescriptor.h"
#include "platform/base/MonotonicClock.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

class qnlog_handle;

namespace bench {

/// The wire's server as a loop written by hand for nothing else: one epoll descriptor, one large
/// buffer, one timer, no allocation for a message, and one list for all activity resets. It does
/// for a plug-in what the application does; everything that makes the application's parts useful
/// elsewhere is left out. One thread, except for stop(). Throws std::system_error where the kernel
/// refuses something at the start.
class BareWireServer {
  public:
    /// Serves `path`, which must not exist. `log` gets a line for each check-in and must outlive
    /// the server; it may be null as long as nobody checks in.
    BareWireServer(const std::string& path, const MVCommCallbacks& callbacks, qnlog_handle* log);
    ~BareWireServer();
    BareWireServer(const BareWireServer&) = delete;
    BareWireServer& operator=(const BareWireServer&) = delete;

    /// Serves what is ready now.
    void turn() { serve(0); }

    /// Serves and waits until stop().
    void run();

    /// Makes the run() in progress return. Any thread.
    void stop() noexcept;

    void sendMessage(const MVCommConsoleMessage& message) noexcept;

    std::size_t checkedIn() const noexcept;

  private:
    using Clock = platform::MonotonicClock;

    /// A place in the list of those whose activity is to be reset, the earliest first.
    struct Link {
        Link* before = this;
        Link* after = this;
    };
    struct Connection;

    void serve(int timeout);
    void serveTimer();
    void armTimer() noexcept;
    void accept();
    void add(platform::FileDescriptor descriptor);
    void read(Connection& connection);
    void take(Connection& connection, std::span<const std::byte> bytes);
    void checkIn(Connection& connection, const std::byte* message);
    void disconnect(Connection& connection);
    void expectReset(Connection& connection) noexcept;
    void serveResets();
    static void unlink(Link& link) noexcept;

    const MVCommCallbacks& callbacks_;
    qnlog_handle* const log_;
    const std::string path_;
    const platform::FileDescriptor epoll_;
    const platform::FileDescriptor wakeUp_;
    const platform::FileDescriptor timer_;
    const platform::FileDescriptor listening_;
    const std::unique_ptr<std::byte[]> buffer_;
    std::vector<std::unique_ptr<Connection>> connections_;
    Link resets_;
    std::vector<std::unique_ptr<Connection>> closed_; // whose reset is still to come
    std::optional<Clock::time_point> callbackDue_;
    Clock::time_point armedFor_ = Clock::time_point::max(); // or earlier than something is due
    Clock::time_point now_;                                 // when the turn began
    std::atomic<bool> isStopped_ = false;
};

} // namespace bench
