#include "framework/async/ThreadStarter.h"

#include <atomic>

namespace QN::async {

namespace {
std::atomic<ThreadStarter> replacement{nullptr};
}

int startThread(pthread_t* thread, void* (*body)(void*), void* argument) {
    if (const ThreadStarter starter = replacement.load(std::memory_order_acquire))
        return starter(thread, body, argument);
    return ::pthread_create(thread, nullptr, body, argument);
}

ThreadStarter replaceThreadStarter(ThreadStarter starter) noexcept {
    return replacement.exchange(starter, std::memory_order_acq_rel);
}

} // namespace QN::async
