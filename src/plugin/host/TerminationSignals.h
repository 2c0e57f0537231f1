#pragma once

#include "platform/loop/SignalEvents.h"

#include <functional>
#include <memory>

namespace platform {
class RunLoop;
class RunLoopSource;
} // namespace platform

/// While it lives, turns SIGTERM, SIGINT and SIGHUP into a call on the run loop's thread, and
/// ignores the signals of failed writes (ignoreWriteSignals()). For a program without an
/// application object. One at a time in a process.
class TerminationSignals {
  public:
    /// `handler` gets the signal's number. The loop's thread only; throws std::system_error when
    /// the kernel has no descriptors left.
    TerminationSignals(platform::RunLoop& loop, std::function<void(int)> handler);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

  private:
    platform::SignalEvents events_;
    std::unique_ptr<platform::RunLoopSource> source_;
};
