#pragma once

#include "platform/base/ThreadSafety.h"

#include <atomic>
#include <cstdint>
#include <thread>

namespace QN::async {

/// Tells the processor that this thread is in a busy loop.
inline void relaxProcessor() noexcept {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

/// A lock of one byte for a few list operations: never held across a task, a wait or the creation
/// of a thread. A thread that finds it taken spins for a moment, then yields, since the holder may
/// need this processor to go on. For platform::ScopedLock.
class CAPABILITY("mutex") SpinFlag {
  public:
    void lock() noexcept ACQUIRE() {
        while (flag_.exchange(1, std::memory_order_acquire) != 0)
            waitUntilFree();
    }
    void unlock() noexcept RELEASE() { flag_.store(0, std::memory_order_release); }

  private:
    void waitUntilFree() const noexcept {
        constexpr int spins = 64;
        for (int i = 0; flag_.load(std::memory_order_relaxed) != 0; ++i) {
            if (i < spins)
                relaxProcessor();
            else
                std::this_thread::yield();
        }
    }

    std::atomic<std::uint8_t> flag_{0};
};

} // namespace QN::async
