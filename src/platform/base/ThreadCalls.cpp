#include "platform/base/ThreadCalls.h"

#include "platform/base/CallStack.h"

#include <array>
#include <atomic>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

namespace platform {

namespace {

/// Never destroyed: the pool and the log work on when static objects are gone.
union SystemCalls {
    constexpr SystemCalls() : calls() {}
    constexpr ~SystemCalls() {}
    ThreadCalls calls;
};
constinit SystemCalls systemCalls;

std::atomic<ThreadCalls*> replacement{nullptr};

constexpr std::size_t longestName = 15;

struct NamedBody {
    std::string name;
    std::function<void()> run;
};

void* runBody(void* body) {
    const std::unique_ptr<NamedBody> owned(static_cast<NamedBody*>(body));
    nameThisThread(owned->name);
    owned->run();
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
    return calls ? *calls : systemCalls.calls;
}

void replaceThreadCalls(ThreadCalls* calls) noexcept {
    replacement = calls;
}

void nameThisThread(const std::string& name) noexcept {
    std::array<char, longestName + 1> kept{};
    name.copy(kept.data(), longestName);
    ::pthread_setname_np(::pthread_self(), kept.data());
}

void startDetachedThread(std::string name, std::function<void()> body) {
    auto owned = std::make_unique<NamedBody>(NamedBody{std::move(name), std::move(body)});
    pthread_t thread{};
    if (const int error = threadCalls().start(&thread, &runBody, owned.get()); error != 0)
        throw TracedError<std::system_error>(error, std::system_category());
    [[maybe_unused]] const auto* const handedOver = owned.release();
    ::pthread_detach(thread);
}

} // namespace platform
