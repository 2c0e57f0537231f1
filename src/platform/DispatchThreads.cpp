#include "platform/DispatchThreads.h"

#include <system_error>
#include <thread>
#include <utility>

namespace platform {

DispatchThreads& DispatchThreads::instance() {
    // Never destroyed, since its threads end with the process only.
    static auto* const threads = new DispatchThreads;
    return *threads;
}

DispatchThreads::DispatchThreads() {
    addThread();
}

void DispatchThreads::submit(std::function<void()> job) {
    {
        const std::lock_guard lock(mutex_);
        jobs_.push_back(std::move(job));
        if (idle_ < jobs_.size() && threads_ < mostThreads) {
            try {
                addThread();
            } catch (const std::system_error&) {
                // The process may have no more: those that there are do the work.
            }
        }
    }
    changed_.notify_one();
}

void DispatchThreads::addThread() {
    std::thread([this] { work(); }).detach();
    ++threads_;
}

void DispatchThreads::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        ++idle_;
        changed_.wait(lock, [this] { return !jobs_.empty(); });
        --idle_;
        {
            const auto job = std::move(jobs_.front());
            jobs_.pop_front();
            lock.unlock();
            job();
        }
        lock.lock();
    }
}

} // namespace platform
