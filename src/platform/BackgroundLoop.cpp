#include "platform/BackgroundLoop.h"

#include "platform/RunLoop.h"

#include <future>
#include <thread>

namespace platform {

namespace {

/// The loop lives on its thread's stack and, with the thread, until the process ends.
RunLoop& startLoop() {
    std::promise<RunLoop*> started;
    std::thread([&started] {
        RunLoop loop;
        started.set_value(&loop);
        loop.run();
    }).detach();
    return *started.get_future().get();
}

} // namespace

RunLoop& backgroundLoop() {
    static RunLoop& loop = startLoop();
    return loop;
}

} // namespace platform
