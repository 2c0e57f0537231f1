#pragma once

#include "platform/FileDescriptor.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <span>

namespace platform {

class RunLoop;
class RunLoopSource;
class Timer;

/// Listens for connections on a run loop. The loop's thread only.
class AcceptSocket {
  public:
    /// Gets each new connection, close-on-exec and non-blocking. Must not destroy the accept
    /// socket.
    using Handler = std::function<void(AcceptSocket&, FileDescriptor)>;

    /// Takes over a listening socket. Null, with errno set, when `listening` is none.
    [[nodiscard]] static std::unique_ptr<AcceptSocket> create(FileDescriptor listening,
                                                              Handler handler);
    ~AcceptSocket();
    AcceptSocket(const AcceptSocket&) = delete;
    AcceptSocket& operator=(const AcceptSocket&) = delete;

    /// Starts accepting on `loop`. False, with errno set, when the loop cannot watch the socket.
    /// While the process has no descriptor left for a connection, accepting rests for a second at a
    /// time; connections wait in the kernel's backlog meanwhile.
    [[nodiscard]] bool schedule(RunLoop& loop);

    int descriptor() const noexcept { return descriptor_.get(); }

  private:
    AcceptSocket(FileDescriptor listening, Handler handler);
    void acceptWaiting();
    void rest(int error);

    const FileDescriptor descriptor_;
    const Handler handler_;
    std::unique_ptr<RunLoopSource> source_;
    std::unique_ptr<Timer> resumption_;
};

/// One connected stream socket. Reading belongs to the run loop's thread; send() may be called on
/// any thread. The descriptor closes with the last owner, so that a sender on another thread never
/// writes to a number that has been given to somebody else. A handler may drop the last owner.
class DataSocket : public std::enable_shared_from_this<DataSocket> {
  public:
    /// Gets everything that the kernel had queued, in one piece, once for each turn of the loop. A
    /// piece of length 0 means that the peer has closed or the connection is broken. The bytes are
    /// the handler's for the length of the call.
    using Handler = std::function<void(DataSocket&, std::span<const std::byte>)>;

    /// Takes over a connected socket and makes it non-blocking. Null, with errno set, when that
    /// fails.
    [[nodiscard]] static std::shared_ptr<DataSocket> create(FileDescriptor connected,
                                                            Handler handler);
    DataSocket(const DataSocket&) = delete;
    DataSocket& operator=(const DataSocket&) = delete;

    /// Watches the socket on `loop` for as long as the result lives, which the socket must outlive.
    /// Null, with errno set, when the loop cannot watch it.
    [[nodiscard]] std::unique_ptr<RunLoopSource> makeSource(RunLoop& loop);

    /// Writes without blocking and without a signal. False, with errno set, unless all of `bytes`
    /// went to the kernel; EAGAIN means that the peer does not read.
    [[nodiscard]] bool send(std::span<const std::byte> bytes) const noexcept;

    /// Ends the connection in both directions; the peer sees the end at once, later sends fail.
    void invalidate() noexcept;

    int descriptor() const noexcept { return descriptor_.get(); }

  private:
    DataSocket(FileDescriptor connected, Handler handler);
    void deliverQueued(RunLoop& loop);

    const FileDescriptor descriptor_;
    const Handler handler_;
};

} // namespace platform
