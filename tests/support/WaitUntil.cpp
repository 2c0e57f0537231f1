#include "support/WaitUntil.h"

#include "platform/loop/RunLoop.h"

#include <poll.h>
#include <unistd.h>
#include <utility>

namespace support {

namespace {

std::function<void()>& eventServer() {
    static std::function<void()> server;
    return server;
}

bool onMainThread() {
    return ::gettid() == ::getpid();
}

/// Returns after a moment, or at once when the run loop has something to do.
void rest() {
    const platform::RunLoop* const loop = platform::RunLoop::current();
    pollfd ready{loop ? loop->descriptor() : -1, POLLIN, 0};
    ::poll(&ready, 1, 2);
}

} // namespace

void setEventServer(std::function<void()> server) {
    eventServer() = std::move(server);
}

void serveEvents() {
    if (onMainThread() && eventServer())
        eventServer()();
    if (platform::RunLoop* const loop = platform::RunLoop::current())
        loop->turn();
}

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds bound) {
    const auto end = std::chrono::steady_clock::now() + bound;
    for (;;) {
        serveEvents();
        if (condition())
            return true;
        if (std::chrono::steady_clock::now() >= end)
            return false;
        rest();
    }
}

} // namespace support
