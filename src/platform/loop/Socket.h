#pragma once

#include "platform/base/FileDescriptor.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

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

    /// Takes over a listening socket. Null, with errno set, if `listening` is not one.
    [[nodiscard]] static std::unique_ptr<AcceptSocket> create(FileDescriptor listening,
                                                              Handler handler);
    ~AcceptSocket();
    AcceptSocket(const AcceptSocket&) = delete;
    AcceptSocket& operator=(const AcceptSocket&) = delete;

    /// Starts accepting on `loop`. False, with errno set, when the loop cannot watch the socket.
    /// Accepting pauses for a second at a time while the process has no free descriptor for a
    /// connection (firstReservedDescriptor()) or the kernel has no memory for it; connections wait
    /// in the kernel's backlog meanwhile. This is logged once, and again only after all waiting
    /// connections have been accepted.
    [[nodiscard]] bool schedule(RunLoop& loop);

    /// Ends a pause early: call this when a descriptor has become free. Does nothing if accepting
    /// is not paused.
    void resume();

    [[nodiscard]] int descriptor() const noexcept { return descriptor_.get(); }

  private:
    AcceptSocket(FileDescriptor listening, Handler handler);
    void acceptWaiting();
    void rest(int error);
    void restEnds() noexcept;

    const FileDescriptor descriptor_;
    const Handler handler_;
    std::unique_ptr<RunLoopSource> source_;
    std::unique_ptr<Timer> resumption_; // pending during a rest
    bool restIsLogged_ = false;
};

/// One connected stream socket. Reading belongs to the run loop's thread; send() may be called on
/// any thread. The descriptor closes with the last owner, so that a sender on another thread never
/// writes to a reused descriptor. A handler may release the last owner.
class DataSocket : public std::enable_shared_from_this<DataSocket> {
  public:
    /// Gets everything that the kernel had queued, in one piece, once per turn of the loop, unless
    /// makeSource() was given a limit. A piece of length 0 means that the peer has closed or the
    /// connection is broken. The bytes are valid during the call.
    using Handler = std::function<void(DataSocket&, std::span<const std::byte>)>;

    /// Takes over a connected socket, blocking or not: neither reading nor sending waits. Never
    /// null.
    [[nodiscard]] static std::shared_ptr<DataSocket> create(FileDescriptor connected,
                                                            Handler handler);
    DataSocket(const DataSocket&) = delete;
    DataSocket& operator=(const DataSocket&) = delete;

    static constexpr std::size_t everything = static_cast<std::size_t>(-1);

    /// Watches the socket on `loop` for as long as the result lives, which the socket must outlive.
    /// A delivery has at most `mostPerTurn` bytes, so that a peer that sends without pause cannot
    /// keep the loop to itself. Null, with errno set, when the loop cannot watch it.
    [[nodiscard]] std::unique_ptr<RunLoopSource> makeSource(RunLoop& loop,
                                                            std::size_t mostPerTurn = everything);

    /// For the handler, before it runs a nested loop or lets others do so: whether the limit cut
    /// this delivery, so that more data comes with the next turn.
    [[nodiscard]] bool isCut() const noexcept { return isCut_; }

    /// For the handler of a cut delivery, likewise: puts back `bytes`, the end of the delivery and
    /// less than the limit, to be delivered again before the next data.
    void putBack(std::span<const std::byte> bytes);

    /// Likewise: drops the data that the peer had sent after this delivery.
    void skipQueued() noexcept { isSkipping_ = true; }

    /// Writes without blocking and without a signal. False, with errno set, unless the kernel took
    /// all of `bytes`; EAGAIN means that the peer does not read.
    [[nodiscard]] bool send(std::span<const std::byte> bytes) const noexcept;

    /// Ends the connection in both directions; the peer sees the end at once, later sends fail.
    void invalidate() noexcept;

    [[nodiscard]] int descriptor() const noexcept { return descriptor_.get(); }

  private:
    DataSocket(FileDescriptor connected, Handler handler);
    void deliverQueued(RunLoop& loop);
    std::optional<std::size_t> readInto(std::vector<std::byte>& bytes);

    const FileDescriptor descriptor_;
    const Handler handler_;

    // The loop's thread only.
    std::size_t mostPerTurn_ = everything;
    std::vector<std::byte> returned_; // by putBack()
    bool isCut_ = false;
    bool isSkipping_ = false;
};

} // namespace platform
