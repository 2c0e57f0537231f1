#include "platform/loop/RunLoop.h"

#include "platform/base/CallStack.h"
#include "platform/base/ExceptionReport.h"
#include "platform/base/Mutex.h"
#include "platform/loop/RunLoopSource.h"
#include "platform/loop/Timer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <system_error>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::size_t mostEvents = 256;      // taken from the kernel at once
constexpr std::int64_t longestWait = 60'000; // ms; waiting ends early for whoever asks again

thread_local RunLoop* currentLoop = nullptr;

FileDescriptor checked(int descriptor, const char* what) {
    if (descriptor < 0)
        throw TracedError<std::system_error>(errno, std::generic_category(), what);
    return FileDescriptor(descriptor);
}

void watchForReading(const FileDescriptor& epoll, const FileDescriptor& watched) {
    epoll_event event{};
    event.events = EPOLLIN;
    // The address distinguishes these two from sources, whose events carry the source.
    event.data.ptr = const_cast<FileDescriptor*>(&watched);
    if (::epoll_ctl(epoll.get(), EPOLL_CTL_ADD, watched.get(), &event) != 0)
        throw TracedError<std::system_error>(errno, std::generic_category(), "epoll_ctl");
}

void drain(const FileDescriptor& counter) noexcept {
    std::uint64_t value = 0;
    [[maybe_unused]] const ssize_t got = ::read(counter.get(), &value, sizeof value);
}

} // namespace

/// One turn in progress. Turns nest when a callback runs a nested loop; a source that is destroyed
/// is removed from the pending events of every turn in progress.
struct RunLoop::Frame {
    explicit Frame(RunLoop& owner) noexcept : loop(owner), outer(owner.innermost_) {
        loop.innermost_ = this;
    }
    ~Frame() { loop.innermost_ = outer; }
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    RunLoop& loop;
    Frame* const outer;
    std::size_t next = 0;
    std::size_t count = 0;
    std::array<epoll_event, mostEvents> events;
};

RunLoop::RunLoop()
    : epoll_(checked(::epoll_create1(EPOLL_CLOEXEC), "epoll_create1"))
    , wakeUp_(checked(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd"))
    , kernelTimer_(
          checked(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK), "timerfd_create"))
    , previous_(currentLoop) {
    watchForReading(epoll_, wakeUp_);
    watchForReading(epoll_, kernelTimer_);
    currentLoop = this;
}

RunLoop::~RunLoop() {
    currentLoop = previous_;
}

RunLoop* RunLoop::current() noexcept {
    return currentLoop;
}

void RunLoop::turn() {
    serve(0);
}

void RunLoop::turnWhenReady() {
    serve(-1);
}

void RunLoop::turnWithin(MonotonicClock::duration bound) {
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(bound);
    serve(static_cast<int>(std::clamp<std::int64_t>(wait.count(), 0, longestWait)));
}

void RunLoop::run() {
    while (!takeStopRequest())
        turnWhenReady();
}

void RunLoop::stop() {
    {
        const ScopedLock lock(postedMutex_);
        stopRequested_ = true;
    }
    post([] {});
}

bool RunLoop::takeStopRequest() {
    const ScopedLock lock(postedMutex_);
    return std::exchange(stopRequested_, false);
}

void RunLoop::post(std::function<void()> call) {
    const ScopedLock lock(postedMutex_);
    posted_.push_back(std::move(call));
    if (posted_.size() > 1)
        return; // woken already: the counter is read only when all calls have been made
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(wakeUp_.get(), &one, sizeof one);
}

void RunLoop::serve(int timeout) {
    Ready ready;
    // As many batches as it takes for each source to have its turn, so that a timer does not fire
    // while what pushes it back is waiting, and no more, so that a flood does not stop the timers.
    std::size_t batches = 1 + sources_ / mostEvents;
    for (bool isFull = serveBatch(timeout, ready); isFull && batches > 1; --batches)
        isFull = serveBatch(0, ready);
    if (ready.posted)
        servePostedCalls();
    if (ready.expired)
        disarmKernelTimer();
    serveTimers();
}

/// Whether more may be waiting.
bool RunLoop::serveBatch(int timeout, Ready& found) {
    Frame frame(*this);
    const int ready = ::epoll_wait(epoll_.get(), frame.events.data(),
                                   static_cast<int>(frame.events.size()), timeout);
    frame.count = ready > 0 ? static_cast<std::size_t>(ready) : 0;
    while (frame.next < frame.count) {
        void* const target = frame.events[frame.next++].data.ptr;
        if (target == &wakeUp_) {
            found.posted = true;
        } else if (target == &kernelTimer_) {
            found.expired =
                true; // and stays readable, so that a callback's own loop serves timers too
        } else if (target != nullptr) {
            // A copy: the handler may destroy its own source.
            const auto handler = static_cast<RunLoopSource*>(target)->handler_;
            guarded(kExceptionInRunLoopSource, handler);
        }
    }
    return frame.count == mostEvents;
}

void RunLoop::servePostedCalls() {
    const ScopedLock lock(postedMutex_);
    // Calls that these calls post wait for the next turn, so that descriptors get theirs between.
    for (std::size_t left = posted_.size(); left > 0 && !posted_.empty(); --left) {
        auto call = std::move(posted_.front());
        posted_.pop_front();
        const ScopedUnlock unlocked(postedMutex_);
        guarded(kExceptionInPostedCall, call);
        call = nullptr; // what it holds may post when it goes
    }
    if (posted_.empty())
        drain(wakeUp_);
}

void RunLoop::serveTimers() {
    const auto now = MonotonicClock::now();
    const std::uint64_t startedBefore = timerSequence_;
    for (settleFront(); !timers_.empty(); settleFront()) {
        const QueuedTimer entry = timers_.front();
        if (entry.deadline > now || entry.sequence > startedBefore)
            break; // not due, or started by a timer of this turn
        Timer& timer = *entry.timer;
        dequeue(timer);
        timer.active_ = false;
        const auto action = timer.action_; // the action may destroy its timer
        armKernelTimer();                  // or run a nested loop, which handles the others
        guarded(kExceptionInTimer, action);
    }
    armKernelTimer();
}

/// Makes the first entry that of a timer that waits for just this: drops stopped ones, and moves
/// those back that have been pushed back since they were queued.
void RunLoop::settleFront() {
    while (!timers_.empty()) {
        const QueuedTimer& entry = timers_.front();
        Timer& timer = *entry.timer;
        if (!timer.active_) {
            dequeue(timer);
        } else if (timer.sequence_ != entry.sequence) {
            place(0, {timer.deadline_, timer.sequence_, &timer});
            siftDown(0);
        } else {
            return;
        }
    }
}

void RunLoop::forget(const RunLoopSource& source) noexcept {
    --sources_;
    ::epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, source.descriptor_, nullptr);
    for (Frame* frame = innermost_; frame != nullptr; frame = frame->outer) {
        for (std::size_t i = frame->next; i < frame->count; ++i) {
            if (frame->events[i].data.ptr == &source)
                frame->events[i].data.ptr = nullptr;
        }
    }
}

void RunLoop::enqueue(Timer& timer) {
    timer.sequence_ = ++timerSequence_;
    const QueuedTimer entry{timer.deadline_, timer.sequence_, &timer};
    if (timer.index_ == Timer::notQueued) {
        timers_.push_back(entry);
        place(timers_.size() - 1, entry);
        siftUp(timer.index_);
    } else if (timer.deadline_ < timers_[timer.index_].deadline) {
        place(timer.index_, entry);
        siftUp(timer.index_);
    } // else the entry stays where it is and is put in its later place when its time comes
    armKernelTimer();
}

void RunLoop::dequeue(Timer& timer) noexcept {
    const std::size_t index = std::exchange(timer.index_, Timer::notQueued);
    if (index == Timer::notQueued)
        return;
    const QueuedTimer last = timers_.back();
    timers_.pop_back();
    if (last.timer == &timer)
        return;
    place(index, last);
    siftUp(index);
    siftDown(last.timer->index_);
}

namespace {

template <typename Entry>
bool earlier(const Entry& a, const Entry& b) noexcept {
    return a.deadline != b.deadline ? a.deadline < b.deadline : a.sequence < b.sequence;
}

} // namespace

void RunLoop::place(std::size_t index, const QueuedTimer& entry) noexcept {
    timers_[index] = entry;
    entry.timer->index_ = index;
}

void RunLoop::siftUp(std::size_t index) noexcept {
    const QueuedTimer entry = timers_[index];
    while (index > 0 && earlier(entry, timers_[(index - 1) / 2])) {
        place(index, timers_[(index - 1) / 2]);
        index = (index - 1) / 2;
    }
    place(index, entry);
}

void RunLoop::siftDown(std::size_t index) noexcept {
    const QueuedTimer entry = timers_[index];
    for (std::size_t child = 2 * index + 1; child < timers_.size(); child = 2 * index + 1) {
        if (child + 1 < timers_.size() && earlier(timers_[child + 1], timers_[child]))
            ++child;
        if (!earlier(timers_[child], entry))
            break;
        place(index, timers_[child]);
        index = child;
    }
    place(index, entry);
}

void RunLoop::disarmKernelTimer() noexcept {
    drain(kernelTimer_);
    armedFor_ = MonotonicClock::time_point::max();
}

void RunLoop::armKernelTimer() {
    // Armed too early is harmless: the turn that follows finds nothing due and arms again.
    if (timers_.empty() || timers_.front().deadline >= armedFor_)
        return;
    settleFront(); // or the kernel would wake us for a timer that has been pushed back
    if (timers_.empty() || timers_.front().deadline >= armedFor_)
        return;
    armedFor_ = timers_.front().deadline;
    const auto delay = std::max(armedFor_ - MonotonicClock::now(), MonotonicClock::duration(1));
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(delay);
    itimerspec when{};
    when.it_value.tv_sec = seconds.count();
    when.it_value.tv_nsec = (delay - seconds).count();
    ::timerfd_settime(kernelTimer_.get(), 0, &when, nullptr);
}

} // namespace platform
