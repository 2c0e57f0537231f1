#include "platform/loop/DispatchThreads.h"

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
        const std::lock_guard lock(mutex_);
        jobs_.push_back(std::move(job));
        if (idle_ < jobs_.size() && threads_ < mostThreads)
            addThread();
    }
    changed_.notify_one();
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
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return !jobs_.empty(); });
        --idle_;
        {
            const auto job = std::move(jobs_.front());
            jobs_.pop_front();
            lock.unlock();
            job();
        }
        lock.lock();
        ++idle_;
    }
}

} // namespace platform
