#pragma once

#include "platform/base/FileDescriptor.h"

#include <optional>

namespace platform {

/// POSIX signals as events that a run loop reads, so that they are dealt with by ordinary code. One
/// object at a time in a process; its creator's thread only.
///
/// The signals are caught by handlers, not blocked for a signal descriptor: that works whatever
/// mask the threads of libraries have, and neither handlers nor masks reach a program that we
/// start.
class SignalEvents {
  public:
    /// Throws std::system_error when the process has no descriptors left.
    SignalEvents();

    /// The signals do again what they did before.
    ~SignalEvents();
    SignalEvents(const SignalEvents&) = delete;
    SignalEvents& operator=(const SignalEvents&) = delete;

    /// From now on the signal is an event. SIGHUP stays without effect when it was ignored before,
    /// as programs started with nohup(1) expect. False when the signal cannot be caught.
    bool watch(int signal) noexcept;

    /// For the end of the program: from now on, and after this object, the signals do nothing, so
    /// that a second one does not cut the end off.
    void silence() noexcept;

    /// Readable when signals have come.
    int descriptor() const noexcept { return readEnd_.get(); }

    /// A signal that has come, nothing when there is none. Several of the same may count as one.
    std::optional<int> next() noexcept;

  private:
    FileDescriptor readEnd_;
    FileDescriptor writeEnd_;
};

/// Has all signals reach the process, whatever mask its parent left it with. For the very beginning
/// of a program, before it has threads.
void unblockSignals() noexcept;

/// Has writing to a connection that the peer has closed (SIGPIPE) or beyond the permitted size of a
/// file (SIGXFSZ) fail with an error instead of ending the process. Programs that we start get the
/// default again.
void ignoreWriteSignals() noexcept;

} // namespace platform
