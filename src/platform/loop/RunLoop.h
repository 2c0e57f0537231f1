#pragma once

#include "platform/base/FileDescriptor.h"
#include "platform/base/MonotonicClock.h"
#include "platform/base/Mutex.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <vector>

namespace platform {

class RunLoopSource;
class Timer;

/// The event loop of one thread: descriptors (RunLoopSource), one-shot timers (Timer) and calls
/// posted from other threads, all behind one epoll descriptor. A program with windows adds that
/// descriptor to its toolkit's loop (RunLoopNotifier); other programs call run().
///
/// Every callback may run a nested loop (a menu, a modal dialog) that calls turn() again, may
/// destroy any source or timer including its own, and may throw: the exception is reported
/// (ExceptionReport) and the loop goes on.
///
/// Belongs to the thread that created it; only post() and stop() may be called from others. It must
/// outlive its sources and timers.
class RunLoop {
  public:
    /// Throws std::system_error when the kernel has no descriptors left.
    RunLoop();
    ~RunLoop();
    RunLoop(const RunLoop&) = delete;
    RunLoop& operator=(const RunLoop&) = delete;

    /// The newest run loop of the calling thread, or null. Not owned.
    static RunLoop* current() noexcept;

    /// Readable whenever turn() has something to do. Stays open as long as the loop lives.
    [[nodiscard]] int descriptor() const noexcept { return epoll_.get(); }

    /// Handles what is ready now and returns without waiting: descriptors first, so that data that
    /// has arrived restarts a timer before that timer can expire, then posted calls, then timers.
    void turn();

    /// Waits until something is ready, and handles it.
    void turnWhenReady();

    /// Waits until something is ready, no longer than `bound`, and handles it.
    void turnWithin(MonotonicClock::duration bound);

    /// Runs the loop until stop(). Blocks.
    void run();

    /// Makes the run() in progress, or the next one, return. Any thread.
    void stop();

    /// Makes a later turn run `call`, in the order of posting. Never blocks. Any thread.
    void post(std::function<void()> call);

  private:
    friend class ReadBuffer;
    friend class RunLoopSource;
    friend class Timer;
    struct Frame;

    struct QueuedTimer {
        MonotonicClock::time_point deadline;
        std::uint64_t sequence;
        Timer* timer;
    };

    /// What else a turn has found ready.
    struct Ready {
        bool posted = false;
        bool expired = false;
    };

    void serve(int timeout);
    bool serveBatch(int timeout, Ready& found);
    void servePostedCalls();
    void serveTimers();
    void settleFront();
    bool takeStopRequest();

    void forget(const RunLoopSource& source) noexcept;

    void enqueue(Timer& timer);
    void dequeue(Timer& timer) noexcept;
    void siftUp(std::size_t index) noexcept;
    void siftDown(std::size_t index) noexcept;
    void place(std::size_t index, const QueuedTimer& entry) noexcept;
    void armKernelTimer();
    void disarmKernelTimer() noexcept;

    const FileDescriptor epoll_;
    const FileDescriptor wakeUp_;
    const FileDescriptor kernelTimer_;

    // The loop's thread only.
    RunLoop* const previous_;
    Frame* innermost_ = nullptr;
    std::size_t sources_ = 0;
    std::vector<QueuedTimer> timers_; // a binary heap, the earliest first
    std::uint64_t timerSequence_ = 0;
    MonotonicClock::time_point armedFor_ = MonotonicClock::time_point::max();
    std::vector<std::vector<std::byte>> spareBuffers_;

    Mutex postedMutex_;
    std::deque<std::function<void()>> posted_ GUARDED_BY(postedMutex_);
    bool stopRequested_ GUARDED_BY(postedMutex_) = false;
};

} // namespace platform
