#pragma once

#include "framework/monitor/RLBGTimer.h"
#include "framework/monitor/WatchedItem.h"
#include "platform/base/Mutex.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform {
class DispatchQueue;
class FileWatch;
} // namespace platform

/// What happened to a watched item.
enum QNItemContentChangeKind : unsigned {
    QNItemContentChanged = 1, ///< written to; of a folder, an entry was added, removed or renamed
    QNItemGone = 2,           ///< deleted, replaced, renamed, or its file system was unmounted
    QNItemNotMonitored = 3,   ///< it cannot be watched; comes once and nothing else does
};

/// One observer of one item: the token that QNItemContentChangeMonitor hands out. It watches from
/// monitor() to stop() or its destruction. After QNItemGone it keeps watching the same file,
/// wherever that was moved: stopping is the observer's decision.
///
/// The handler is called on the observer's queue. It may throw, which is reported
/// (platform::ExceptionReport), and may stop and release its own observer. Any thread.
class QNItemContentChangeProxy : public std::enable_shared_from_this<QNItemContentChangeProxy> {
  public:
    using Handler = std::function<void(const WatchedItem& item, QNItemContentChangeKind kind)>;

    /// No queue: the main queue.
    [[nodiscard]] static std::shared_ptr<QNItemContentChangeProxy>
    make(WatchedItem item, std::shared_ptr<platform::DispatchQueue> queue, Handler handler);
    ~QNItemContentChangeProxy();
    QNItemContentChangeProxy(const QNItemContentChangeProxy&) = delete;
    QNItemContentChangeProxy& operator=(const QNItemContentChangeProxy&) = delete;

    /// Starts to watch. Call it once.
    void monitor();

    /// Ends the watch. A queued handler call may still come. When none can come any more, except by
    /// an earlier notify() on a concurrent queue, `completion` is submitted to the global queue.
    /// False, and no completion, if nothing is being watched.
    [[nodiscard]] bool stop(std::function<void()> completion);

    /// Calls the handler on the observer's queue, with the item and `kind`.
    void notify(QNItemContentChangeKind kind);

    [[nodiscard]] const WatchedItem& item() const noexcept { return item_; }
    [[nodiscard]] const std::shared_ptr<platform::DispatchQueue>& queue() const noexcept;
    [[nodiscard]] const Handler& handler() const noexcept { return handler_; }

    /// Seconds. If above zero, the first write starts that delay, and all writes until its end make
    /// one call; otherwise, which is the default, each write is reported at once.
    [[nodiscard]] double contentChangeCoalesceInterval() const noexcept {
        return contentChangeCoalesceInterval_;
    }
    void setContentChangeCoalesceInterval(double seconds) noexcept {
        contentChangeCoalesceInterval_ = seconds;
    }

    /// Identity.
    [[nodiscard]] bool isEqual(const QNItemContentChangeProxy* other) const noexcept {
        return other == this;
    }
    [[nodiscard]] std::size_t hash() const noexcept { return reinterpret_cast<std::size_t>(this); }

    /// For messages: class, address, item.
    [[nodiscard]] std::string description() const;

  private:
    QNItemContentChangeProxy(WatchedItem item, std::shared_ptr<platform::DispatchQueue> queue,
                             Handler handler);

    std::unique_ptr<platform::FileWatch> makeSource();
    void handleEvents(std::uint32_t events);
    void requestCoalescedCall(double interval);
    void makeCoalescedCall(std::uint64_t burst);
    bool dropCoalescedCall();
    bool isCurrent(std::uint64_t burst) const;
    void callHandler(QNItemContentChangeKind kind) const noexcept;

    RLBGTimer coalesceTimer_{nullptr};
    const std::shared_ptr<platform::DispatchQueue> queue_;
    const WatchedItem item_;
    const Handler handler_;
    std::atomic<double> contentChangeCoalesceInterval_{0};

    mutable platform::Mutex mutex_;
    std::unique_ptr<platform::FileWatch> source_ GUARDED_BY(mutex_);
    std::optional<double> pendingInterval_ GUARDED_BY(mutex_); // of a pending coalesced call
    // Identifies coalesced calls, to recognise a dropped one.
    std::uint64_t burst_ GUARDED_BY(mutex_) = 0;
};
