#include "framework/async/queue.h"

#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <stdexcept>
#include <thread>
#include <vector>

using QN::async::queue;

namespace {

constexpr std::size_t queueCount = 64;

/// Queues that threads, and the tasks on the queues, fill, wait for and destroy at random.
///
/// Waits that would be the tasks' own fault are left out: a task waits for its own place and those
/// with greater numbers only, so that there are no circles, and never for a background queue, for
/// which no further worker would be made.
class Playground {
  public:
    Playground() {
        for (std::size_t i = 0; i < queueCount; ++i)
            places_[i].current = makeQueue(i);
    }

    /// What a thread does, or a task of the queue in the place `own`: appends tasks that do the
    /// same, `depth` times over, and now and then waits, destroys or throws.
    void act(std::optional<std::size_t> own, unsigned seed, int depth) {
        std::minstd_rand random(seed);
        const auto draw = [&random] { return static_cast<unsigned>(random()); };
        if (depth > 0) {
            append(draw() % queueCount, draw(), depth - 1);
            append(draw() % queueCount, draw(), depth - 2);
        }
        const unsigned choice = draw() % 16;
        const std::size_t place = own && choice == 1 ? *own : draw() % queueCount;
        const bool mayWait = !own || (place > *own && !isBackground(place));
        if (choice == 0 && mayWait)
            share(place)->wait();
        else if (choice == 1 && (mayWait || (own && !isBackground(*own))))
            replace(place);
        else if (choice == 2 && own)
            throw std::runtime_error("at random");
    }

    bool isDone() const { return appended == ran; }

    std::atomic<std::uint64_t> appended = 0;
    std::atomic<std::uint64_t> ran = 0;
    std::atomic<std::uint64_t> overlaps = 0; ///< tasks that ran beside another of a serial queue

  private:
    struct Place {
        std::mutex mutex;
        std::shared_ptr<queue> current;
        std::shared_ptr<std::atomic<int>> running; ///< tasks of the current queue
    };

    static bool isSerial(std::size_t place) { return place % 2 == 0; }
    static bool isBackground(std::size_t place) { return place % 5 == 0; }

    static std::shared_ptr<queue> makeQueue(std::size_t place) {
        return std::make_shared<queue>("stressed", isSerial(place), isBackground(place) ? -254 : 2);
    }

    void append(std::size_t to, unsigned seed, int depth) {
        Place& place = places_[to];
        const std::lock_guard lock(place.mutex);
        ++appended;
        if (!place.running)
            place.running = std::make_shared<std::atomic<int>>(0);
        place.current->enqueue([this, to, seed, depth, running = place.running] {
            if (running->fetch_add(1) > 0 && isSerial(to))
                ++overlaps;
            const auto leave = [&](void*) {
                running->fetch_sub(1);
                ++ran;
            };
            const std::unique_ptr<void, decltype(leave)> guard(this, leave);
            act(to, seed, depth);
        });
    }

    std::shared_ptr<queue> share(std::size_t of) {
        const std::lock_guard lock(places_[of].mutex);
        return places_[of].current;
    }

    /// Puts a new queue in the place and lets go of the old one, which drains it.
    void replace(std::size_t where) {
        // Destroyed when the mutex is free again, which the tasks that it waits for may need.
        std::shared_ptr<queue> other = makeQueue(where);
        Place& place = places_[where];
        const std::lock_guard lock(place.mutex);
        place.running.reset();
        other.swap(place.current);
    }

    std::array<Place, queueCount> places_;
};

} // namespace

TEST(PoolStress, SixtyFourQueuesOfTasksThatAppendWaitThrowAndDestroyQueues) {
    constexpr unsigned threadCount = 4;
    constexpr unsigned rounds = 500;
    constexpr int depth = 7;
    testing::internal::CaptureStdout(); // a line for each task that throws
    Playground playground;
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (unsigned t = 0; t < threadCount; ++t) {
        threads.emplace_back([&playground, t] {
            for (unsigned i = 0; i < rounds; ++i)
                playground.act(std::nullopt, 1 + i * threadCount + t, depth);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(support::waitUntil([&] { return playground.isDone(); }));
    testing::internal::GetCapturedStdout();
    EXPECT_GT(playground.ran, std::uint64_t{threadCount} * rounds * depth);
    EXPECT_EQ(playground.overlaps, 0U);
}
