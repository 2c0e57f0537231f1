#pragma once

#include "comm/MVCommCallbacks.h"
#include "comm/MVCommConnectionProcess.h"
#include "comm/MVCommLogLimit.h"
#include "comm/MVCommMessages.h"
#include "comm/MVCommParser.h"
#include "platform/base/Mutex.h"
#include "platform/loop/Timer.h"

#include <QList>
#include <QString>

#include <array>
#include <atomic>
#include <cstddef>
#include <list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

class MVCommConnection;
class MVCommListener;
class MVCommSender;

namespace platform {
class AcceptSocket;
class DataSocket;
class DispatchQueue;
class FileDescriptor;
class RunLoop;
} // namespace platform

/// The server of one socket path: accepts plug-ins, reads their messages, keeps their records, and
/// sends every command to all of them.
///
/// Lives on the main thread and its run loop. Sends run on the server's own serial queue and never
/// wait for a peer; sendMessage(), the two flags and connectionProcesses() may be called on any
/// thread. The connections lock is never held across anything that can wait. A callback may shut
/// the server down and release it. If a callback runs its own event loop, newer messages are
/// handled in there, before the rest of the current read.
class MVCommunication : public std::enable_shared_from_this<MVCommunication> {
  public:
    /// Serves `socketPath` on the calling thread's run loop, replacing a stale socket file. Null
    /// when that fails, with the reason in the system log. `comm` must outlive the server; its
    /// callbacks are fetched for each event, and the data callback must be set before the first
    /// message.
    [[nodiscard]] static std::shared_ptr<MVCommunication> create(MVCommCallbacks& comm,
                                                                 const QString& socketPath);

    /// Does what shutdown() does.
    ~MVCommunication();
    MVCommunication(const MVCommunication&) = delete;
    MVCommunication& operator=(const MVCommunication&) = delete;

    [[nodiscard]] const QString& socketPath() const noexcept { return socketPath_; }

    /// Whether the path now leads into a folder other than at first, or into none; then it needs a
    /// new server. A socket file that vanishes from the same folder is recreated (MVCommListener).
    [[nodiscard]] bool isFolderReplaced() const;

    /// From now on the socket file is not recreated, so that another server can take the path.
    void stopRecreating();

    /// Queues `message` for every connection, in the order of the calls. A message that was sent
    /// less than 1/12 s ago is dropped (see setAllowFrequentMessages), as are all messages while
    /// suppressMessages() is on or nobody is connected. Null does nothing. A plug-in that does not
    /// read loses the message, with a line in the system log.
    void sendMessage(const MVCommConsoleMessage* message);

    /// Whether repetitions within 1/12 s are sent. Off at first.
    void setAllowFrequentMessages(bool allow) noexcept { allowFrequentMessages_ = allow; }

    /// Whether sendMessage() does nothing. Off at first.
    void suppressMessages(bool suppress) noexcept { suppressMessages_ = suppress; }

    /// Copies of the records of all connections, in the order of connecting; pid 0 and a null name
    /// stand for a plug-in that has not checked in.
    [[nodiscard]] QList<MVCommConnectionProcess> connectionProcesses() const;
    [[nodiscard]] bool isAnybodyConnected() const;

    /// Writes the messages that sendMessage() accepted, without waiting for a peer; then closes all
    /// connections, stops listening and removes the socket file, unless the path now leads to
    /// another file.
    void shutdown();

    /// Accepts one connection; the listening socket's handler. A connection of a user that the
    /// façade does not accept is closed, with at most one line a second in the system log.
    void handleBaseSocketAccept(platform::AcceptSocket& socket,
                                platform::FileDescriptor descriptor);

    /// Handles the bytes of one read; the connections' handler, which gets at most 8 KiB per
    /// plug-in and turn of the loop, and never splits messages. Length 0 means that the peer has
    /// closed. An error drops the rest of the read, but keeps the connection; each is one line in
    /// the system log, at most ten a second per connection, then their number.
    void handleSocketData(const platform::DataSocket& socket, std::span<const std::byte> data);

  private:
    /// The message last sent for a key, and when: seconds of the monotonic clock.
    struct LastMessage {
        std::array<std::byte, sizeof(MVCommConsoleMessage)> bytes{};
        double sent = 0;
    };
    using Connections = std::list<std::shared_ptr<MVCommConnection>>;
    using Senders = std::vector<std::shared_ptr<MVCommSender>>;

    MVCommunication(MVCommCallbacks& comm, QString socketPath);
    bool setup();
    bool isWelcome(int descriptor);

    std::shared_ptr<MVCommConnection> connectionOf(const platform::DataSocket& socket) const;
    MVCommParser::Result handleMessages(MVCommConnection& connection, MVCommParser& parser,
                                        const char* method);
    void handleCheckin(MVCommConnection& connection, const MVCommParser::Checkin& checkin,
                       const char* method);
    void handleDisconnect(const std::shared_ptr<MVCommConnection>& connection);
    void scheduleConnectionCallback();
    void connectionCallbackDelayed();
    void resetActivity(MVCommConnection& connection);
    void retire(const std::shared_ptr<MVCommConnection>& connection);
    void doSendMessage(const MVCommConsoleMessage& message);
    std::shared_ptr<const Senders> senders();

    MVCommCallbacks& comm_;
    const QString socketPath_;

    // Main thread.
    platform::RunLoop* const runLoop_;
    std::unique_ptr<MVCommListener> listener_; // null after shutdown()
    platform::Timer connectionCallbackTimer_;
    platform::MonotonicClock::time_point burstBegan_; // of check-ins; while the timer is active
    MVCommLogLimit strangerLimit_;
    Connections retired_; // disconnected, but with a pending activity reset
    std::vector<std::optional<Connections::iterator>> placeOfDescriptor_; // in connections_

    mutable platform::Mutex connectionsLock_;
    Connections connections_ GUARDED_BY(connectionsLock_); // changed on the main thread only
    // Of the connections; null: rebuild on demand.
    std::shared_ptr<const Senders> senders_ GUARDED_BY(connectionsLock_);

    std::atomic<bool> allowFrequentMessages_ = false;
    std::atomic<bool> suppressMessages_ = false;

    // The send queue only.
    std::unordered_map<std::string, LastMessage> lastMessages_;

    const std::shared_ptr<platform::DispatchQueue> sendQueue_;
};
