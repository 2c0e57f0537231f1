#pragma once

#include "platform/loop/DispatchQueue.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

/// What a request does while a run is pending. With any other value it does nothing.
enum RLBGTimerBehavior : std::uint32_t {
    RLBGTimerCoalesce = 0, ///< the earliest deadline wins
    RLBGTimerDelay = 1,    ///< the latest request sets the deadline
};

/// Runs a block once, after a delay, on a serial queue of its own, and merges requests that come
/// before it has run:
///
///     RLBGTimer saving(nullptr, RLBGTimerDelay, "com.example.saving");
///     saving.setTargetQueue(platform::DispatchQueue::main());
///     saving.afterDelay(2.0, [](void*) { save(); }); // at each change: saves once it is quiet
///
/// A run stops being pending before its block begins, so the block can request the next one.
/// Destroying the timer cancels; a block that has begun is waited for, unless it destroys the timer
/// itself.
///
/// Any thread. Every operation takes its turn on the timer's queue: it waits while a block of the
/// timer runs on another thread. Called from that block, or from a block of the target queue, it
/// runs in place. So do not hold a lock that the block takes.
class RLBGTimer {
  public:
    /// Gets the value of obj() when it runs. Exceptions are reported (platform::ExceptionReport).
    using Block = std::function<void(void* object)>;

    static constexpr const char* defaultLabel = "com.rlwork.RLBGTimer";

    /// Coalesces, with the default label. `object` is not owned.
    explicit RLBGTimer(void* object);
    RLBGTimer(void* object, std::uint32_t behavior, std::string queueLabel);
    ~RLBGTimer();
    RLBGTimer(const RLBGTimer&) = delete;
    RLBGTimer& operator=(const RLBGTimer&) = delete;

    /// Requests one run, `delay` seconds from now; zero or less means at once. Throws
    /// std::system_error when the process has no thread or descriptor left for its first timer.
    /// Time spent waiting for the turn counts. The block of the request that sets the deadline is
    /// run; the others are dropped.
    void afterDelay(double delay, Block block);

    /// Drops the pending run, if any.
    void cancel();

    /// Sets where blocks run from now on: on another serial queue or the main queue, interleaved
    /// with its blocks, or on the global queue, the default.
    void setTargetQueue(std::shared_ptr<platform::DispatchQueue> queue);

    /// Runs the block on the timer's queue and waits until it has run; an exception of it goes to
    /// the caller. No run begins meanwhile.
    void performWhileLocked(const std::function<void()>& block);

    [[nodiscard]] void* obj() const noexcept;
    void setObj(void* object) noexcept;
    [[nodiscard]] const std::shared_ptr<platform::DispatchQueue>& queue() const noexcept;

  private:
    struct State;
    const std::shared_ptr<State> state_;
};
