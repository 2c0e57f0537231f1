#include "plugin/host/TerminationSignals.h"

#include "platform/base/CallStack.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/RunLoopSource.h"

#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

TerminationSignals::TerminationSignals(platform::RunLoop& loop, std::function<void(int)> handler) {
    const auto deliver = [this, call = std::move(handler)] {
        if (const auto signal = events_.next())
            call(*signal);
    };
    source_ = platform::RunLoopSource::create(loop, events_.descriptor(),
                                              platform::RunLoopSource::reading, deliver);
    if (!source_)
        throw platform::TracedError<std::system_error>(errno, std::generic_category(), "epoll_ctl");
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        events_.watch(signal);
    platform::ignoreWriteSignals();
}

TerminationSignals::~TerminationSignals() = default;
