#include "framework/monitor/QNItemContentChangeMonitor.h"

#include "platform/base/CallStack.h"
#include "platform/loop/DispatchQueue.h"

#include <stdexcept>
#include <unordered_set>
#include <utility>

using platform::DispatchQueue;

namespace {

struct LiveSet {
    LiveSet() { observers.reserve(1); }

    const std::shared_ptr<DispatchQueue> queue = DispatchQueue::makeSerial("qn.itemChangeMonitor");
    std::unordered_set<QNItemContentChangeMonitor::Observer> observers; // on the queue only
};

LiveSet& live() {
    // Never destroyed: observers may be removed until the process has ended.
    static auto* const set = new LiveSet;
    return *set;
}

void forget(const QNItemContentChangeMonitor::Observer& observer) {
    live().queue->async([observer] { live().observers.erase(observer); });
}

} // namespace

QNItemContentChangeMonitor::Observer
QNItemContentChangeMonitor::addObserverForItem(const std::string& url, Queue queue,
                                               Handler handler) {
    WatchedItem item = WatchedItem::url(url);
    if (!item.isFileUrl())
        throw platform::TracedError<std::invalid_argument>("");
    return addObserverForObject(std::move(item), std::move(queue), std::move(handler));
}

QNItemContentChangeMonitor::Observer
QNItemContentChangeMonitor::addObserverForPath(const std::string& path, Queue queue,
                                               Handler handler) {
    if (!path.starts_with('/'))
        throw platform::TracedError<std::invalid_argument>("");
    return addObserverForObject(WatchedItem::path(path), std::move(queue), std::move(handler));
}

QNItemContentChangeMonitor::Observer
QNItemContentChangeMonitor::addObserverForFileDescriptor(int descriptor, Queue queue,
                                                         Handler handler) {
    if (descriptor < 0)
        throw platform::TracedError<std::invalid_argument>("");
    return addObserverForObject(WatchedItem::descriptor(descriptor), std::move(queue),
                                std::move(handler));
}

QNItemContentChangeMonitor::Observer
QNItemContentChangeMonitor::addObserverForObject(WatchedItem item, Queue queue, Handler handler) {
    auto observer =
        QNItemContentChangeProxy::make(std::move(item), std::move(queue), std::move(handler));
    observer->monitor();
    live().queue->async([observer] { live().observers.insert(observer); });
    return observer;
}

void QNItemContentChangeMonitor::removeObserver(const Observer& observer) {
    if (!observer)
        return;
    // One that could never be watched, or has been removed before, has nothing to wait for.
    if (!observer->stop([observer] { forget(observer); }))
        forget(observer);
}

void QNItemContentChangeMonitor::removeAllObserversUsingQueue(const Queue& queue) {
    if (!queue)
        return;
    live().queue->async([queue] {
        DispatchQueue::global()->async([queue, observers = live().observers] {
            for (const Observer& observer : observers) {
                if (observer->queue() == queue)
                    removeObserver(observer);
            }
        });
    });
}

void QNItemContentChangeMonitor::triggerChangeForItem(const WatchedItem& item) {
    live().queue->async([item] {
        for (const Observer& observer : live().observers) {
            if (observer->item() == item)
                observer->notify(QNItemContentChanged);
        }
    });
}
