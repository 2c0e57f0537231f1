#include "platform/loop/ThreadCalls.h"

#include "platform/processes/CallStack.h"

#include <atomic>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

namespace platform {

namespace {

// There before any other static object, and with nothing to lose when those go.
constinit ThreadCalls systemCalls;

std::atomic<ThreadCalls*> replacement{nullptr};

void* runBody(void* body) {
    const std::unique_ptr<std::function<void()>> owned(static_cast<std::function<void()>*>(body));
    (*owned)();
    return nullptr;
}

} // namespace

int ThreadCalls::start(pthread_t* thread, void* (*body)(void*), void* argument) noexcept {
    return ::pthread_create(thread, nullptr, body, argument);
}

void ThreadCalls::pause(std::chrono::nanoseconds time) noexcept {
    std::this_thread::sleep_for(time);
}

ThreadCalls& threadCalls() noexcept {
    ThreadCalls* const calls = replacement.load();
    return calls ? *calls : systemCalls;
}

void replaceThreadCalls(ThreadCalls* calls) noexcept {
    replacement = calls;
}

void startDetachedThread(std::function<void()> body) {
    auto owned = std::make_unique<std::function<void()>>(std::move(body));
    pthread_t thread{};
    if (const int error = threadCalls().start(&thread, &runBody, owned.get()); error != 0)
        throw TracedError<std::system_error>(error, std::system_category());
    [[maybe_unused]] const auto* const handedOver = owned.release();
    ::pthread_detach(thread);
}

} // namespace platform
