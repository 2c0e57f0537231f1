#include "platform/loop/DispatchQueue.h"

#include "platform/base/ExceptionReport.h"
#include "platform/loop/DispatchThreads.h"
#include "platform/loop/SerialDispatchQueue.h"

namespace platform {

namespace {

thread_local const DispatchQueue::Running* innermost = nullptr;

/// Blocks run as they come, so there is no turn to wait for.
class GlobalQueue final : public DispatchQueue {
  public:
    GlobalQueue() : DispatchQueue("default-priority") {}

    void async(Block block) override {
        DispatchThreads::instance().submit([this, work = std::move(block)] {
            const Running running(*this);
            guarded(kExceptionInDispatchQueue, work);
        });
    }

    void setTarget(std::shared_ptr<DispatchQueue> /*target*/) override {}

  protected:
    void syncFromOutside(const Block& block) override {
        const Running running(*this);
        block();
    }
    bool isHeldByCaller() const noexcept override { return false; }
};

} // namespace

std::shared_ptr<DispatchQueue> DispatchQueue::makeSerial(std::string label) {
    return std::make_shared<SerialDispatchQueue>(std::move(label), global());
}

const std::shared_ptr<DispatchQueue>& DispatchQueue::global() {
    // Never destroyed: blocks may be submitted until the process has ended.
    static const auto* const queue =
        new std::shared_ptr<DispatchQueue>(std::make_shared<GlobalQueue>());
    return *queue;
}

void DispatchQueue::sync(const Block& block) {
    if (isCurrent())
        block();
    else
        syncFromOutside(block);
}

bool DispatchQueue::isCurrent() const noexcept {
    for (const Running* running = innermost; running != nullptr; running = running->outer()) {
        if (&running->queue() == this)
            return true;
    }
    return false;
}

DispatchQueue::Running::Running(const DispatchQueue& queue) noexcept
    : queue_(queue), outer_(innermost) {
    innermost = this;
}

DispatchQueue::Running::~Running() {
    innermost = outer_;
}

} // namespace platform
