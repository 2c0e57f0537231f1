#include "framework/async/WorkerPool.h"

#include "platform/base/Mutex.h"

#include <algorithm>
#include <utility>

namespace QN::async {

worker* WorkerPool::claim() {
    if (free_.load() <= 0)
        return nullptr;
    const platform::ScopedLock lock(flag_);
    return claimUnderFlag();
}

worker* WorkerPool::claimUnderFlag() noexcept {
    const auto found =
        std::find_if(workers_.begin(), workers_.end(), [](worker& each) { return each.claim(); });
    if (found == workers_.end())
        return nullptr;
    free_.fetch_sub(1);
    return &*found;
}

void WorkerPool::release(worker& claimed) noexcept {
    claimed.release();
    free_.fetch_add(1);
}

worker& WorkerPool::create(Round round) {
    std::list<worker> fresh;
    worker& made = fresh.emplace_back("QN::async::worker", std::move(round));
    made.start();
    const platform::ScopedLock lock(flag_);
    workers_.splice(workers_.end(), fresh);
    size_.fetch_add(1);
    return made;
}

bool WorkerPool::retire() {
    std::list<worker> retired; // destroyed, which joins the thread, when the flag is free again
    const platform::ScopedLock lock(flag_);
    const worker* const free = claimUnderFlag();
    if (!free)
        return false;
    const auto place = std::find_if(workers_.begin(), workers_.end(),
                                    [free](const worker& each) { return &each == free; });
    retired.splice(retired.end(), workers_, place);
    size_.fetch_sub(1);
    return true;
}

} // namespace QN::async
