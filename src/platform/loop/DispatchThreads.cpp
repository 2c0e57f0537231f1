#include "platform/loop/DispatchThreads.h"

#include "platform/base/Mutex.h"
#include "platform/base/SystemLog.h"
#include "platform/base/ThreadCalls.h"

#include <system_error>
#include <utility>

namespace platform {

DispatchThreads& DispatchThreads::instance() {
    // Never destroyed, since its threads end with the process only.
    static auto* const threads = new DispatchThreads;
    return *threads;
}

void DispatchThreads::submit(std::function<void()> job) {
    {
        const ScopedLock lock(mutex_);
        jobs_.push_back(std::move(job));
        if (idle_ < jobs_.size() && threads_ < mostThreads)
            addThread();
    }
    changed_.notifyOne();
}

void DispatchThreads::addThread() {
    try {
        startDetachedThread("dispatch", [this] { work(); });
        ++threads_;
        ++idle_; // it looks for work as soon as it runs
    } catch (const std::system_error& error) {
        // Those that there are do the work; without any, the next submission tries again.
        if (threads_ == 0)
            systemLog(LogPriority::error, "Work waits for a thread: %s", error.what());
    }
}

void DispatchThreads::work() {
    const ScopedLock lock(mutex_);
    for (;;) {
        while (jobs_.empty())
            changed_.wait(mutex_);
        --idle_;
        auto job = std::move(jobs_.front());
        jobs_.pop_front();
        {
            const ScopedUnlock unlocked(mutex_);
            job();
            job = nullptr; // its captures are released without the lock
        }
        ++idle_;
    }
}

} // namespace platform
