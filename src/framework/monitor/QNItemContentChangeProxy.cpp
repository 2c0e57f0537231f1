#include "framework/monitor/QNItemContentChangeProxy.h"

#include "platform/base/ExceptionReport.h"
#include "platform/base/MonotonicClock.h"
#include "platform/base/Mutex.h"
#include "platform/base/SystemLog.h"
#include "platform/files/FileWatch.h"

#include <chrono>
#include <sstream>
#include <system_error>
#include <utility>

using platform::DispatchQueue;
using platform::FileWatch;

std::shared_ptr<QNItemContentChangeProxy>
QNItemContentChangeProxy::make(WatchedItem item, std::shared_ptr<DispatchQueue> queue,
                               Handler handler) {
    return std::shared_ptr<QNItemContentChangeProxy>(
        new QNItemContentChangeProxy(std::move(item), std::move(queue), std::move(handler)));
}

QNItemContentChangeProxy::QNItemContentChangeProxy(WatchedItem item,
                                                   std::shared_ptr<DispatchQueue> queue,
                                                   Handler handler)
    : queue_(std::move(queue)), item_(std::move(item)), handler_(std::move(handler)) {}

QNItemContentChangeProxy::~QNItemContentChangeProxy() {
    // The end of the timer must not wait for a turn on the observer's queue.
    coalesceTimer_.setTargetQueue(DispatchQueue::global());
}

const std::shared_ptr<DispatchQueue>& QNItemContentChangeProxy::queue() const noexcept {
    return queue_ ? queue_ : DispatchQueue::main();
}

void QNItemContentChangeProxy::monitor() {
    coalesceTimer_.setTargetQueue(queue());
    const platform::ScopedLock lock(mutex_);
    source_ = makeSource();
    if (!source_)
        notify(QNItemNotMonitored);
}

std::unique_ptr<FileWatch> QNItemContentChangeProxy::makeSource() {
    // Events do not keep a released observer alive.
    const auto take = [weak = weak_from_this()](std::uint32_t events) {
        if (const auto self = weak.lock())
            self->handleEvents(events);
    };
    try {
        if (const auto descriptor = item_.descriptor())
            return FileWatch::createForDescriptor(*descriptor, queue(), take);
        if (const auto path = item_.fileSystemPath())
            return FileWatch::createForPath(*path, queue(), take);
    } catch (const std::system_error& error) { // no thread or descriptor for the background loop
        platform::systemLog(platform::LogPriority::error, "Files can't be watched: %s",
                            error.what());
    }
    return nullptr;
}

bool QNItemContentChangeProxy::stop(std::function<void()> completion) {
    std::unique_ptr<FileWatch> source;
    {
        const platform::ScopedLock lock(mutex_);
        source = std::move(source_);
    }
    if (!source)
        return false;
    source->cancel([self = shared_from_this(), completion = std::move(completion)]() mutable {
        self->dropCoalescedCall();
        if (!completion)
            return;
        // Behind a coalesced call that is being made.
        self->coalesceTimer_.queue()->async([completion = std::move(completion)]() mutable {
            DispatchQueue::global()->async(std::move(completion));
        });
    });
    return true;
}

void QNItemContentChangeProxy::notify(QNItemContentChangeKind kind) {
    queue()->async([self = shared_from_this(), kind] { self->callHandler(kind); });
}

void QNItemContentChangeProxy::handleEvents(std::uint32_t events) {
    if ((events & (FileWatch::deleted | FileWatch::renamed | FileWatch::revoked)) != 0) {
        callHandler(QNItemGone);
        return;
    }
    if ((events & FileWatch::written) == 0)
        return;
    const double interval = contentChangeCoalesceInterval_;
    if (interval > 0) {
        requestCoalescedCall(interval);
        return;
    }
    if (dropCoalescedCall())
        coalesceTimer_.setTargetQueue(queue());
    callHandler(QNItemContentChanged);
}

/// Asks on the timer's own queue, where asking needs no waiting: a thread of the pool that waited
/// until the observer's queue had time would be missing elsewhere. The deadline counts from here.
/// A request that could not bring the deadline forward is not made at all.
void QNItemContentChangeProxy::requestCoalescedCall(double interval) {
    std::uint64_t burst = 0;
    {
        const platform::ScopedLock lock(mutex_);
        if (pendingInterval_ && *pendingInterval_ <= interval)
            return;
        pendingInterval_ = interval;
        burst = burst_;
    }
    const auto asked = platform::MonotonicClock::now();
    coalesceTimer_.queue()->async([weak = weak_from_this(), interval, burst, asked] {
        const auto self = weak.lock();
        if (!self || !self->isCurrent(burst))
            return;
        const std::chrono::duration<double> since = platform::MonotonicClock::now() - asked;
        self->coalesceTimer_.afterDelay(interval - since.count(), [weak, burst](void*) {
            if (const auto observer = weak.lock())
                observer->makeCoalescedCall(burst);
        });
    });
}

void QNItemContentChangeProxy::makeCoalescedCall(std::uint64_t burst) {
    {
        const platform::ScopedLock lock(mutex_);
        if (burst != burst_)
            return;
        ++burst_;
        pendingInterval_.reset(); // before the handler reads, so that later writes are reported
    }
    callHandler(QNItemContentChanged);
}

/// The mark comes first, so that a call which is waiting for its turn is not made on the queue that
/// it is moved to. False when no call was pending.
bool QNItemContentChangeProxy::dropCoalescedCall() {
    {
        const platform::ScopedLock lock(mutex_);
        if (!pendingInterval_)
            return false;
        ++burst_;
        pendingInterval_.reset();
    }
    coalesceTimer_.setTargetQueue(DispatchQueue::global());
    coalesceTimer_.cancel();
    return true;
}

bool QNItemContentChangeProxy::isCurrent(std::uint64_t burst) const {
    const platform::ScopedLock lock(mutex_);
    return burst == burst_;
}

void QNItemContentChangeProxy::callHandler(QNItemContentChangeKind kind) const noexcept {
    platform::guarded(platform::kExceptionInItemHandler, [&] { handler_(item_, kind); });
}

std::string QNItemContentChangeProxy::description() const {
    std::ostringstream text;
    text << "QNItemContentChangeProxy<" << static_cast<const void*>(this)
         << ">: " << item_.description();
    return text.str();
}
