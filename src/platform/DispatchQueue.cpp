#include "platform/DispatchQueue.h"

#include "platform/ExceptionReport.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace platform {

namespace {

/// The threads behind all queues: one from the beginning, so that work is always done, and more on
/// demand, up to one for each processor. They live as long as the process.
class SharedThreads {
  public:
    static SharedThreads& instance() {
        static SharedThreads threads;
        return threads;
    }

    SharedThreads(const SharedThreads&) = delete;
    SharedThreads& operator=(const SharedThreads&) = delete;

    ~SharedThreads() {
        {
            const std::lock_guard lock(mutex_);
            ending_ = true;
        }
        changed_.notify_all();
        for (std::thread& thread : threads_)
            thread.join();
    }

    void submit(std::function<void()> job) {
        {
            const std::lock_guard lock(mutex_);
            jobs_.push_back(std::move(job));
            if (idle_ < jobs_.size() && threads_.size() < limit_)
                addThread();
        }
        changed_.notify_one();
    }

  private:
    SharedThreads() {
        threads_.emplace_back([this] { work(); });
    }

    void addThread() {
        try {
            threads_.emplace_back([this] { work(); });
        } catch (const std::system_error&) {
            // The process may have no more: those that there are do the work.
        }
    }

    void work() {
        std::unique_lock lock(mutex_);
        for (;;) {
            ++idle_;
            changed_.wait(lock, [this] { return ending_ || !jobs_.empty(); });
            --idle_;
            if (jobs_.empty())
                return;
            const auto job = std::move(jobs_.front());
            jobs_.pop_front();
            lock.unlock();
            job();
            lock.lock();
        }
    }

    const std::size_t limit_ = std::clamp(std::thread::hardware_concurrency(), 2U, 8U);
    std::mutex mutex_;
    std::condition_variable changed_;
    // Guarded by mutex_.
    std::deque<std::function<void()>> jobs_;
    std::vector<std::thread> threads_;
    std::size_t idle_ = 0;
    bool ending_ = false;
};

} // namespace

struct DispatchQueue::State {
    explicit State(std::string name) : label(std::move(name)) {}

    /// Runs one block, then lets the other queues have their turn.
    static void runNext(const std::shared_ptr<State>& state) {
        {
            std::function<void()> block;
            {
                const std::lock_guard lock(state->mutex);
                block = std::move(state->blocks.front());
                state->blocks.pop_front();
            }
            guarded(kExceptionInDispatchQueue, block);
        } // what the block holds is gone before anybody learns that it has run
        const std::lock_guard lock(state->mutex);
        ++state->finished;
        state->progress.notify_all();
        if (state->blocks.empty())
            state->scheduled = false;
        else
            SharedThreads::instance().submit([state] { runNext(state); });
    }

    const std::string label;
    std::mutex mutex;
    std::condition_variable progress;
    // Guarded by mutex.
    std::deque<std::function<void()>> blocks;
    std::size_t submitted = 0;
    std::size_t finished = 0;
    bool scheduled = false;
};

DispatchQueue::DispatchQueue(std::string label)
    : state_(std::make_shared<State>(std::move(label))) {
    SharedThreads::instance(); // so that the threads outlive queues with static storage
}

DispatchQueue::~DispatchQueue() {
    drain();
}

void DispatchQueue::async(std::function<void()> block) {
    const std::lock_guard lock(state_->mutex);
    state_->blocks.push_back(std::move(block));
    ++state_->submitted;
    if (std::exchange(state_->scheduled, true))
        return;
    SharedThreads::instance().submit([state = state_] { State::runNext(state); });
}

void DispatchQueue::drain() {
    std::unique_lock lock(state_->mutex);
    const std::size_t wanted = state_->submitted;
    state_->progress.wait(lock, [&] { return state_->finished >= wanted; });
}

const std::string& DispatchQueue::label() const noexcept {
    return state_->label;
}

} // namespace platform
