#pragma once

#include "platform/base/ThreadSafety.h"

#include <condition_variable>
#include <mutex>
#include <shared_mutex>

namespace platform {

/// The standard mutexes, but known to clang's thread-safety analysis. Any thread.
class CAPABILITY("mutex") Mutex {
  public:
    void lock() ACQUIRE() { mutex_.lock(); }
    void unlock() RELEASE() { mutex_.unlock(); }

  private:
    friend class Condition;
    std::mutex mutex_;
};

class CAPABILITY("mutex") SharedMutex {
  public:
    void lock() ACQUIRE() { mutex_.lock(); }
    void unlock() RELEASE() { mutex_.unlock(); }
    void lockShared() ACQUIRE_SHARED() { mutex_.lock_shared(); }
    void unlockShared() RELEASE_SHARED() { mutex_.unlock_shared(); }

  private:
    std::shared_mutex mutex_;
};

/// Holds a mutex until its own end.
template <typename Lockable>
class SCOPED_CAPABILITY ScopedLock {
  public:
    explicit ScopedLock(Lockable& mutex) ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~ScopedLock() RELEASE() { mutex_.unlock(); }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

  private:
    Lockable& mutex_;
};

/// The reverse: releases a held mutex, and takes it again at its own end.
template <typename Lockable>
class SCOPED_CAPABILITY ScopedUnlock {
  public:
    explicit ScopedUnlock(Lockable& mutex) RELEASE(mutex) : mutex_(mutex) { mutex_.unlock(); }
    ~ScopedUnlock() RELEASE() { mutex_.lock(); } // what it gives up is its release
    ScopedUnlock(const ScopedUnlock&) = delete;
    ScopedUnlock& operator=(const ScopedUnlock&) = delete;

  private:
    Lockable& mutex_;
};

/// Holds a SharedMutex together with other SharedLocks, until its own end.
class SCOPED_CAPABILITY SharedLock {
  public:
    explicit SharedLock(SharedMutex& mutex) ACQUIRE_SHARED(mutex) : mutex_(mutex) {
        mutex_.lockShared();
    }
    ~SharedLock() RELEASE() { mutex_.unlockShared(); }
    SharedLock(const SharedLock&) = delete;
    SharedLock& operator=(const SharedLock&) = delete;

  private:
    SharedMutex& mutex_;
};

/// A condition variable. Waits may end without a notification: wait in a loop, which the analysis
/// can follow, unlike a predicate. The mutex must be held; it is released while waiting.
class Condition {
  public:
    void notifyOne() noexcept { condition_.notify_one(); }
    void notifyAll() noexcept { condition_.notify_all(); }

    void wait(Mutex& mutex) REQUIRES(mutex) {
        std::unique_lock lock(mutex.mutex_, std::adopt_lock);
        condition_.wait(lock);
        lock.release();
    }

    /// False once `deadline`, of any clock of the standard library, has passed.
    template <typename Deadline>
    [[nodiscard]] bool waitUntil(Mutex& mutex, Deadline deadline) REQUIRES(mutex) {
        std::unique_lock lock(mutex.mutex_, std::adopt_lock);
        const std::cv_status status = condition_.wait_until(lock, deadline);
        lock.release();
        return status == std::cv_status::no_timeout;
    }

  private:
    std::condition_variable condition_;
};

} // namespace platform
