#pragma once

#include <functional>
#include <memory>

namespace platform {

class RunLoop;

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the run loop's thread while it lives, and has
/// SIGPIPE do nothing. Afterwards the signals do what they did before. One at a time in a process.
///
/// The signals are caught by handlers, not by a signal descriptor: that works whatever mask the
/// threads of libraries have, and neither handlers nor masks reach a program that we start.
class TerminationSignals {
  public:
    /// `handler` gets the signal's number. The loop's thread only; throws std::system_error when
    /// the kernel has no descriptors left.
    TerminationSignals(RunLoop& loop, std::function<void(int)> handler);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace platform
