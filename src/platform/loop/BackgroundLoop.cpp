#include "platform/loop/BackgroundLoop.h"

#include "platform/base/ThreadCalls.h"
#include "platform/loop/RunLoop.h"

#include <exception>
#include <future>
#include <memory>

namespace platform {

namespace {

/// The loop lives, with its thread, until the process ends.
RunLoop& startLoop() {
    std::promise<RunLoop*> started;
    startDetachedThread("background loop", [&started] {
        std::unique_ptr<RunLoop> loop;
        try {
            loop = std::make_unique<RunLoop>();
        } catch (...) {
            started.set_exception(std::current_exception());
            return;
        }
        started.set_value(loop.get());
        loop->run();
    });
    return *started.get_future().get();
}

} // namespace

RunLoop& backgroundLoop() {
    static RunLoop& loop = startLoop();
    return loop;
}

} // namespace platform
