#pragma once

#include "platform/bus/SessionBus.h"

#include <functional>
#include <memory>

/// Calls a handler on the main thread each time the machine has resumed from sleep, reported by
/// logind on the system bus, until it is destroyed. Does nothing without a bus or logind; a lost
/// bus is one line in the system log, and it does not reconnect. An exception of the handler is
/// reported (ExceptionReport). Main thread only.
class ResumeObserver {
  public:
    explicit ResumeObserver(std::function<void()> handler,
                            const QDBusConnection& bus = platform::systemBus());
    ~ResumeObserver();
    ResumeObserver(const ResumeObserver&) = delete;
    ResumeObserver& operator=(const ResumeObserver&) = delete;

  private:
    class Receiver;
    std::unique_ptr<Receiver> receiver_;
};
