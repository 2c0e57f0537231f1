#include "framework/monitor/RLBGTimer.h"

#include "platform/loop/BackgroundLoop.h"
#include "platform/loop/RunLoop.h"
#include "support/ManualClock.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <latch>
#include <thread>

using namespace std::chrono_literals;

namespace {

/// Returns when the background loop has served all timers that are due.
void serveDueTimers() {
    for (int i = 0; i < 2; ++i) {
        std::latch served(1);
        platform::backgroundLoop().post([&served] { served.count_down(); });
        served.wait();
    }
}

/// Notes when a thread has read the clock. Lives as long as the program: another thread may be
/// reading the clock while the former one is put back.
class NotingSource : public platform::MonotonicClock::Source {
  public:
    platform::MonotonicClock::time_point now() const noexcept override {
        const auto time = clock.load()->now();
        if (std::this_thread::get_id() == watched.load())
            hasRead = true;
        return time;
    }

    std::atomic<const Source*> clock = nullptr;
    std::atomic<std::thread::id> watched{};
    mutable std::atomic<bool> hasRead = false;
};

/// Tells when a thread has read the clock.
class ClockReadings {
  public:
    explicit ClockReadings(const platform::MonotonicClock::Source* clock) {
        source().clock = clock;
        source().watched = std::thread::id();
        source().hasRead = false;
        platform::MonotonicClock::replaceSource(&source());
    }
    ~ClockReadings() { platform::MonotonicClock::replaceSource(source().clock); }
    ClockReadings(const ClockReadings&) = delete;
    ClockReadings& operator=(const ClockReadings&) = delete;

    static void watchThisThread() { source().watched = std::this_thread::get_id(); }
    static bool hasRead() noexcept { return source().hasRead; }

  private:
    static NotingSource& source() {
        static auto& one = *new NotingSource;
        return one;
    }
};

/// The clock that is in use.
const platform::MonotonicClock::Source* clockInUse() {
    const auto* const used = platform::MonotonicClock::replaceSource(nullptr);
    platform::MonotonicClock::replaceSource(used);
    return used;
}

class RLBGTimerTest : public testing::Test {
  protected:
    /// Moves the clock; due runs are done afterwards.
    void advance(std::chrono::milliseconds step, RLBGTimer& timer) {
        serveDueTimers(); // so that the loop knows what has been started
        clock.advance(step);
        serveDueTimers();
        timer.performWhileLocked([] {});
    }

    RLBGTimer::Block run() {
        return [this](void*) { ++runs; };
    }

    support::ManualClock clock;
    std::atomic<int> runs = 0;
};

} // namespace

TEST_F(RLBGTimerTest, CoalescingKeepsTheEarliestDeadlineAndItsBlock) {
    for (const double first : {1.0, 5.0}) {
        RLBGTimer timer(nullptr);
        std::atomic<double> ran = 0;
        for (const double delay : {first, 6.0 - first})
            timer.afterDelay(delay, [&ran, delay](void*) { ran = ran + delay; });
        advance(999ms, timer);
        EXPECT_EQ(ran, 0);
        advance(1ms, timer);
        EXPECT_EQ(ran, 1);
        advance(10s, timer);
        EXPECT_EQ(ran, 1);
    }
}

TEST_F(RLBGTimerTest, DelayingPushesTheDeadlineOutUntilRequestsStop) {
    RLBGTimer timer(nullptr, RLBGTimerDelay, "com.quarnel.test");
    EXPECT_EQ(timer.queue()->label(), "com.quarnel.test");
    for (int i = 0; i < 6; ++i) {
        timer.afterDelay(1, run());
        advance(500ms, timer);
    }
    EXPECT_EQ(runs, 0);
    advance(500ms, timer);
    EXPECT_EQ(runs, 1);
    advance(10s, timer);
    EXPECT_EQ(runs, 1);
}

TEST_F(RLBGTimerTest, ABlockMayRequestTheNextRun) {
    RLBGTimer timer(nullptr);
    const std::function<void(void*)> again = [&](void*) {
        ++runs;
        timer.afterDelay(1, again);
    };
    timer.afterDelay(1, again);
    for (int i = 1; i <= 3; ++i) {
        advance(1s, timer);
        EXPECT_EQ(runs, i);
    }
}

TEST_F(RLBGTimerTest, TimeSpentWaitingForTheTurnCounts) {
    const struct {
        std::chrono::milliseconds waited;
        std::chrono::milliseconds left;
    } cases[] = {{600ms, 400ms}, {2s, 0ms}};
    for (const auto& each : cases) {
        runs = 0;
        const ClockReadings readings(clockInUse());
        RLBGTimer timer(nullptr);
        std::thread asking;
        timer.performWhileLocked([&] {
            asking = std::thread([&] {
                ClockReadings::watchThisThread();
                timer.afterDelay(1, run());
            });
            EXPECT_TRUE(support::waitUntil([&] { return ClockReadings::hasRead(); }));
            clock.advance(each.waited);
        });
        asking.join();
        if (each.left > 0ms) {
            advance(each.left - 1ms, timer);
            EXPECT_EQ(runs, 0);
        }
        advance(each.left > 0ms ? 1ms : 0ms, timer);
        EXPECT_EQ(runs, 1);
    }
}

TEST_F(RLBGTimerTest, DropsARunThatWaitsForItsTurn) {
    RLBGTimer timer(nullptr, RLBGTimerDelay, "com.quarnel.test");
    const auto makeItDue = [&] {
        timer.afterDelay(1, run());
        serveDueTimers();
        clock.advance(1s);
        serveDueTimers(); // submitted by now, behind us
    };
    timer.performWhileLocked([&] {
        makeItDue();
        timer.cancel();
    });
    timer.performWhileLocked([&] {
        makeItDue();
        timer.afterDelay(1, run()); // pushes it out
    });
    timer.performWhileLocked([] {});
    EXPECT_EQ(runs, 0);
    advance(1s, timer);
    EXPECT_EQ(runs, 1);
}

TEST_F(RLBGTimerTest, ATimerThatIsDestroyedDoesNotRunAndMayBeDestroyedByItsBlock) {
    auto timer = std::make_unique<RLBGTimer>(nullptr);
    timer->afterDelay(1, run());
    timer.reset();
    timer = std::make_unique<RLBGTimer>(nullptr);
    const auto queue = timer->queue();
    timer->afterDelay(1, [&](void*) { timer.reset(); });
    serveDueTimers();
    clock.advance(1s);
    serveDueTimers();
    queue->sync([] {});
    EXPECT_EQ(timer, nullptr);
    EXPECT_EQ(runs, 0);
}

TEST_F(RLBGTimerTest, RunsInTurnWithTheTargetQueueAndCanBeUsedFromIt) {
    const auto target = platform::DispatchQueue::makeSerial("com.quarnel.test.target");
    RLBGTimer timer(nullptr);
    timer.setTargetQueue(target);
    target->sync([&] {
        timer.afterDelay(1, [&](void*) {
            EXPECT_TRUE(target->isCurrent());
            ++runs;
        });
        serveDueTimers();
        clock.advance(1s);
        serveDueTimers();
        EXPECT_EQ(runs, 0); // it waits for us
    });
    EXPECT_TRUE(support::waitUntil([&] { return runs == 1; }));
    target->sync([&] {
        timer.afterDelay(1, run());
        timer.setTargetQueue(platform::DispatchQueue::global());
        timer.cancel();
    });
    advance(1s, timer);
    EXPECT_EQ(runs, 1);
}
