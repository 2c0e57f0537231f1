#pragma once

#include "platform/base/FileDescriptor.h"

#include <optional>

namespace platform {

/// Delivers POSIX signals as events to a run loop, so that ordinary code can handle them. One
/// object at a time in a process; its creator's thread only.
///
/// The signals are caught by handlers, not blocked for a signalfd: that works with any signal mask
/// of library threads, and child programs inherit neither handlers nor masks.
class SignalEvents {
  public:
    /// Throws std::system_error when the process has no descriptors left.
    SignalEvents();

    /// Restores the former actions of the signals.
    ~SignalEvents();
    SignalEvents(const SignalEvents&) = delete;
    SignalEvents& operator=(const SignalEvents&) = delete;

    /// From now on the signal is an event. SIGHUP stays ignored if it was ignored before, as
    /// nohup(1) requires. False if the signal cannot be caught.
    bool watch(int signal) noexcept;

    /// For the end of the program: from now on the signals are ignored, even after this object is
    /// destroyed, so that a second signal does not interrupt the exit.
    void silence() noexcept;

    /// Readable when signals have arrived.
    [[nodiscard]] int descriptor() const noexcept { return readEnd_.get(); }

    /// The next signal, or nothing. Several of the same kind may be merged.
    [[nodiscard]] std::optional<int> next() noexcept;

  private:
    FileDescriptor readEnd_;
    FileDescriptor writeEnd_;
};

/// Unblocks all signals, whatever mask was inherited from the parent. Call it at the start of a
/// program, before it has threads.
void unblockSignals() noexcept;

/// Makes writing to a closed connection (SIGPIPE) or beyond the file size limit (SIGXFSZ) fail with
/// an error instead of ending the process. Child programs get the default actions.
void ignoreWriteSignals() noexcept;

} // namespace platform
