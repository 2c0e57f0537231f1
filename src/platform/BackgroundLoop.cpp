#include "platform/BackgroundLoop.h"

#include "platform/RunLoop.h"

#include <exception>
#include <future>
#include <memory>
#include <thread>

namespace platform {

namespace {

/// The loop lives, with its thread, until the process ends.
RunLoop& startLoop() {
    std::promise<RunLoop*> started;
    std::thread([&started] {
        std::unique_ptr<RunLoop> loop;
        try {
            loop = std::make_unique<RunLoop>();
        } catch (...) {
            started.set_exception(std::current_exception());
            return;
        }
        started.set_value(loop.get());
        loop->run();
    }).detach();
    return *started.get_future().get();
}

} // namespace

RunLoop& backgroundLoop() {
    static RunLoop& loop = startLoop();
    return loop;
}

} // namespace platform
