#pragma once

#include "platform/bus/SessionBus.h"

#include <functional>
#include <memory>

/// Calls a handler on the main thread each time that the machine has woken up again, as logind
/// tells it on the system bus, until it is destroyed. Without a bus or without logind nothing ever
/// happens; that the bus has gone is one line in the system log, and the next one is not looked
/// for. An exception of the handler is reported (ExceptionReport). Main thread only.
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
