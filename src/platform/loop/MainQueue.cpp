#include "platform/loop/MainQueue.h"

#include "platform/base/ExceptionReport.h"
#include "platform/base/Mutex.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/loop/RunLoop.h"

#include <deque>
#include <exception>
#include <future>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

class MainQueue final : public DispatchQueue {
  public:
    static const std::shared_ptr<MainQueue>& instance() {
        // Never destroyed, as the global queue.
        static const auto* const queue =
            new std::shared_ptr<MainQueue>(std::make_shared<MainQueue>());
        return *queue;
    }

    MainQueue() : DispatchQueue("main") {}

    void async(Block block) override {
        const ScopedLock lock(mutex_);
        blocks_.push_back(std::move(block));
        if (loop_ != nullptr)
            loop_->post([this] { runNext(); });
    }

    void setTarget(std::shared_ptr<DispatchQueue> /*target*/) override {}

    void setLoop(RunLoop* loop) {
        const ScopedLock lock(mutex_);
        loop_ = loop;
        servingThread_ = loop_ != nullptr ? ::gettid() : ::getpid();
        for (std::size_t i = 0; loop_ != nullptr && i < blocks_.size(); ++i)
            loop_->post([this] { runNext(); });
    }

    /// Runs what there is; the calling thread is the main one as long.
    void drain() {
        {
            const ScopedLock lock(mutex_);
            servingThread_ = ::gettid();
        }
        while (runNext()) {
        }
        const ScopedLock lock(mutex_);
        servingThread_ = ::getpid();
    }

    bool runNext() {
        Block block;
        {
            const ScopedLock lock(mutex_);
            if (blocks_.empty())
                return false;
            block = std::move(blocks_.front());
            blocks_.pop_front();
        }
        const Running running(*this);
        guarded(kExceptionInDispatchQueue, block);
        return true;
    }

  protected:
    void syncFromOutside(const Block& block) override {
        if (isHeldByCaller()) {
            const Running running(*this);
            block();
            return;
        }
        std::promise<void> done;
        async([&] {
            try {
                block();
                done.set_value();
            } catch (...) {
                done.set_exception(std::current_exception());
            }
        });
        done.get_future().get();
    }

    /// The main thread runs the blocks, or would: until it returns, nobody else does.
    bool isHeldByCaller() const noexcept override {
        const ScopedLock lock(mutex_);
        return ::gettid() == servingThread_;
    }

  private:
    mutable Mutex mutex_;
    std::deque<Block> blocks_ GUARDED_BY(mutex_);
    RunLoop* loop_ GUARDED_BY(mutex_) = nullptr;
    // The process's first thread until a service exists.
    pid_t servingThread_ GUARDED_BY(mutex_) = ::getpid();
};

} // namespace

const std::shared_ptr<DispatchQueue>& DispatchQueue::main() {
    static const auto* const queue = new std::shared_ptr<DispatchQueue>(MainQueue::instance());
    return *queue;
}

MainQueueService::MainQueueService(RunLoop& loop) {
    MainQueue::instance()->setLoop(&loop);
}

MainQueueService::~MainQueueService() {
    MainQueue::instance()->setLoop(nullptr);
}

void drainMainQueue() {
    MainQueue::instance()->drain();
}

} // namespace platform
