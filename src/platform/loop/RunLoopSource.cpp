#include "platform/loop/RunLoopSource.h"

#include "platform/loop/RunLoop.h"

#include <sys/epoll.h>

namespace platform {

namespace {

epoll_event eventFor(std::uint32_t interest, RunLoopSource* source) noexcept {
    epoll_event event{};
    if ((interest & RunLoopSource::reading) != 0)
        event.events |= EPOLLIN;
    if ((interest & RunLoopSource::writing) != 0)
        event.events |= EPOLLOUT;
    event.data.ptr = source;
    return event;
}

} // namespace

RunLoopSource::RunLoopSource(RunLoop& loop, int descriptor, Handler handler)
    : loop_(loop), descriptor_(descriptor), handler_(std::move(handler)) {}

std::unique_ptr<RunLoopSource> RunLoopSource::create(RunLoop& loop, int descriptor,
                                                     std::uint32_t interest, Handler handler) {
    std::unique_ptr<RunLoopSource> source(new RunLoopSource(loop, descriptor, std::move(handler)));
    epoll_event event = eventFor(interest, source.get());
    source->watching_ = ::epoll_ctl(loop.epoll_.get(), EPOLL_CTL_ADD, descriptor, &event) == 0;
    if (!source->watching_)
        return nullptr;
    ++loop.sources_;
    return source;
}

RunLoopSource::~RunLoopSource() {
    // A refused source must not end another watch of the same descriptor.
    if (watching_)
        loop_.forget(*this);
}

bool RunLoopSource::setInterest(std::uint32_t interest) noexcept {
    epoll_event event = eventFor(interest, this);
    return ::epoll_ctl(loop_.epoll_.get(), EPOLL_CTL_MOD, descriptor_, &event) == 0;
}

} // namespace platform
