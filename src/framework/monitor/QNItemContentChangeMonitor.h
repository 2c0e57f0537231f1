#pragma once

#include "framework/monitor/QNItemContentChangeProxy.h"

#include <memory>
#include <string>

/// Watches files and folders:
///
///     auto observer = QNItemContentChangeMonitor::addObserverForPath(
///         "/etc/hosts", platform::DispatchQueue::main(),
///         [](const WatchedItem&, QNItemContentChangeKind kind) {
///             if (kind == QNItemContentChanged)
///                 readAgain();
///         });
///     observer->setContentChangeCoalesceInterval(0.5); // at most one call for a burst of writes
///     ...
///     QNItemContentChangeMonitor::removeObserver(observer);
///
/// The observer is the token for its removal. The monitor holds it too: an observer that is never
/// removed watches until the process ends. It watches the file that the path refers to at the time
/// of the call. An editor that saves by renaming a new file into place ends that watch with
/// QNItemGone; to watch the new file, remove the observer and add another.
///
/// An item that cannot be watched (no such file, not readable, no watches left in the system) is
/// reported to its handler once, as QNItemNotMonitored, and not tried again. Any thread.
class QNItemContentChangeMonitor {
  public:
    using Handler = QNItemContentChangeProxy::Handler;
    using Observer = std::shared_ptr<QNItemContentChangeProxy>;
    using Queue = std::shared_ptr<platform::DispatchQueue>;

    QNItemContentChangeMonitor() = delete;

    /// `url` must have the scheme "file". Throws std::invalid_argument, like the two below, if the
    /// argument is invalid.
    static Observer addObserverForItem(const std::string& url, Queue queue, Handler handler);

    /// `path` must begin with "/".
    static Observer addObserverForPath(const std::string& path, Queue queue, Handler handler);

    /// `descriptor` must be 0 or more, and is never closed; keep it open until the observer has
    /// been removed.
    static Observer addObserverForFileDescriptor(int descriptor, Queue queue, Handler handler);

    /// Common implementation of the three above. No queue: the main queue.
    static Observer addObserverForObject(WatchedItem item, Queue queue, Handler handler);

    /// Ends and removes an observer, without waiting: a handler call in flight may still come.
    /// Repeated calls are harmless.
    static void removeObserver(const Observer& observer);

    /// The same for all observers whose queue is this one. Nothing happens without a queue.
    static void removeAllObserversUsingQueue(const Queue& queue);

    /// Notifies all observers of an equal item that it has changed, as if it had been written to,
    /// without coalescing.
    static void triggerChangeForItem(const WatchedItem& item);
};
