#include "framework/async/ThreadLimit.h"
#include "framework/async/manager.h"

#include "platform/base/SystemValue.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/loop/MainQueue.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

using namespace QN::async;

namespace {

/// A pool whose manager is never started, so that its passes run on the main queue, by hand. Never
/// destroyed, as the real one.
class HandPool {
  public:
    HandPool() : manager_(*new manager) {
        static auto& kept = *new std::vector<manager*>; // known to the leak detector
        kept.push_back(&manager_);
    }

    std::shared_ptr<qshuttle> makeQueue(bool serial, std::int32_t priority) {
        auto made = std::make_shared<qshuttle>("by hand", serial, priority);
        manager_.enroll(made);
        return made;
    }

    static void append(qshuttle& queue, std::function<void()> task) {
        (void)queue.append({std::move(task), nullptr});
    }

    /// One pass, and those that it or the end of a task has requested.
    void pass() {
        manager_.dispatch();
        platform::drainMainQueue();
    }

    void passUntilIdle(qshuttle& queue) {
        EXPECT_TRUE(support::waitUntil([&] {
            pass();
            const qshuttle::Snapshot snapshot = queue.snapshot();
            return !snapshot.isRunnable && !snapshot.isShared;
        }));
    }

    manager* operator->() const noexcept { return &manager_; }

  private:
    manager& manager_;
};

/// Tasks that hold their thread until they are released.
struct Gate {
    std::function<void()> task() {
        return [this] {
            ++entered;
            isOpen.wait(false);
        };
    }
    void open() {
        isOpen = true;
        isOpen.notify_all();
    }
    std::atomic<std::uint32_t> entered = 0;
    std::atomic<bool> isOpen = false;
};

} // namespace

TEST(Manager, ARequestForAQueueIsNotLostToAPassThatComesBeforeItsRegistration) {
    HandPool pool;
    pool->dispatch();
    const auto queue = pool.makeQueue(true, 0);
    std::atomic<bool> ran = false;
    HandPool::append(*queue, [&] { ran = true; });
    pool->offer(queue);
    platform::drainMainQueue();
    EXPECT_TRUE(support::waitUntil([&] { return ran.load(); }));
    pool.passUntilIdle(*queue);
}

TEST(Manager, ABackgroundQueueNeverMakesThePoolLargerThanItsBaseSize) {
    HandPool pool;
    Gate gate;
    std::vector<std::shared_ptr<qshuttle>> queues;
    for (std::uint32_t i = 0; i < baseSize() + 3; ++i) {
        queues.push_back(pool.makeQueue(i % 2 == 0, -254));
        HandPool::append(*queues.back(), gate.task());
        HandPool::append(*queues.back(), [] {});
    }
    for (int i = 0; i < 10; ++i)
        pool.pass();
    EXPECT_EQ(pool->workerCount(), baseSize());
    EXPECT_TRUE(support::waitUntil([&] { return gate.entered == baseSize(); }));
    gate.open();
    for (const auto& queue : queues)
        pool.passUntilIdle(*queue);
    EXPECT_EQ(gate.entered, queues.size());
    EXPECT_EQ(pool->workerCount(), baseSize());
    EXPECT_EQ(pool->statistics().completions, 2 * queues.size());
}

TEST(Manager, ABackgroundQueueThatWaitsGetsTheFirstWorkerThatIsFree) {
    HandPool pool;
    std::vector<std::unique_ptr<Gate>> gates;
    const auto busy = pool.makeQueue(false, -254);
    for (std::uint32_t i = 0; i < baseSize(); ++i)
        HandPool::append(*busy, gates.emplace_back(std::make_unique<Gate>())->task());
    EXPECT_TRUE(support::waitUntil([&] {
        pool.pass();
        return gates.back()->entered == 1;
    }));
    const auto waiting = pool.makeQueue(false, -254);
    std::atomic<bool> ran = false;
    HandPool::append(*waiting, [&] { ran = true; });
    pool.pass();
    EXPECT_FALSE(ran);

    gates.front()->open();
    EXPECT_TRUE(support::waitUntil([&] {
        platform::drainMainQueue(); // only passes that the pool itself has requested
        return ran.load();
    }));
    for (const auto& gate : gates)
        gate->open();
    pool.passUntilIdle(*busy);
}

TEST(Manager, GrowsByAWorkerForEachTaskThatWaitsAndShrinksByOneInAnIdlePassToTheBaseSize) {
    HandPool pool;
    Gate gate;
    const auto queue = pool.makeQueue(false, 2);
    const std::uint32_t waiting = baseSize() + 4;
    for (std::uint32_t i = 0; i < waiting; ++i)
        HandPool::append(*queue, gate.task());
    EXPECT_TRUE(support::waitUntil([&] {
        pool.pass();
        return gate.entered == waiting;
    }));
    EXPECT_EQ(pool->workerCount(), waiting);
    EXPECT_EQ(pool->statistics().retiredWorkers, 0U); // not while anything runs

    gate.open();
    EXPECT_TRUE(support::waitUntil([&] { return queue->running() == 0; }));
    EXPECT_TRUE(support::waitUntil([&] {
        const std::uint64_t passes = pool->statistics().passes;
        const std::uint32_t workers = pool->workerCount();
        pool.pass();
        EXPECT_GE(pool->workerCount() + (pool->statistics().passes - passes), workers);
        return pool->workerCount() == baseSize();
    }));
    for (int i = 0; i < 5; ++i)
        pool.pass();
    EXPECT_EQ(pool->workerCount(), baseSize());
    EXPECT_EQ(pool->statistics().retiredWorkers, waiting - baseSize());
}

TEST(Manager, LateQueuesGetTheirTurnWhileEarlyOnesHaveMoreWorkThanThereAreWorkers) {
    HandPool pool;
    Gate gate;
    std::atomic<bool> isServed = false;
    std::vector<std::shared_ptr<qshuttle>> busy;
    std::vector<std::function<void()>> again(baseSize() + 1);
    for (std::size_t i = 0; i < again.size(); ++i) {
        busy.push_back(pool.makeQueue(i % 2 == 0, -254));
        again[i] = [&, i] { // appends itself for as long as the last queue is not served
            if (!isServed)
                HandPool::append(*busy[i], again[i]);
        };
        HandPool::append(*busy[i], again[i]);
    }
    const auto last = pool.makeQueue(true, -254);
    HandPool::append(*last, [&] { isServed = true; });
    EXPECT_TRUE(support::waitUntil([&] {
        pool.pass();
        return isServed.load();
    }));
    for (const auto& queue : busy)
        pool.passUntilIdle(*queue);
}

TEST(Manager, ForgetsAQueueWithoutAHandleWhenItHasDrained) {
    HandPool pool;
    auto queue = pool.makeQueue(true, 0);
    const std::weak_ptr<qshuttle> watch = queue;
    HandPool::append(*queue, [] {});
    queue->becomeZombie();
    queue.reset();
    EXPECT_TRUE(support::waitUntil([&] {
        pool.pass();
        return watch.expired();
    }));
    EXPECT_EQ(pool->statistics().completions, 1U);
}

namespace {

struct Facts {
    std::optional<std::uint32_t> maxThreads;
    std::optional<std::uint32_t> taskThreads;
    std::optional<std::uint64_t> processes;
};
Facts facts;

bool factValue(const char* name, void* buffer, std::size_t size) noexcept {
    const std::optional<std::uint32_t> value =
        std::string_view(name) == "kern.wq_max_threads"    ? facts.maxThreads
        : std::string_view(name) == "kern.num_taskthreads" ? facts.taskThreads
                                                           : std::nullopt;
    if (value && size == sizeof *value)
        std::memcpy(buffer, &*value, size);
    return value.has_value();
}

} // namespace

TEST(ThreadLimit, ComesFromTheFirstSourceThatHasIt) {
    struct Case {
        Facts facts;
        std::uint32_t limit;
    };
    constexpr std::uint64_t huge = std::uint64_t{1} << 40;
    const std::array<Case, 8> cases{{
        {{512, 64, 2000}, 512},
        {{{}, 64, 2000}, 32},
        {{{}, {}, 2000}, 1000},
        {{{}, {}, {}}, 128},
        {{0, 64, 2000}, 128}, // a source that answers 0 is not passed over
        {{{}, 1, 2000}, 128},
        {{{}, {}, 0}, 128}, // also without limit
        {{{}, {}, huge}, 0xffffffff},
    }};
    const auto previous = platform::replaceSystemValueSource(&factValue);
    for (const Case& each : cases) {
        facts = each.facts;
        EXPECT_EQ(
            threadLimitFrom({&platform::systemValue, []() noexcept { return facts.processes; }}),
            each.limit);
    }
    platform::replaceSystemValueSource(previous);
    std::uint32_t value = 0;
    EXPECT_FALSE(platform::systemValue("kern.wq_max_threads", &value, sizeof value));
}
