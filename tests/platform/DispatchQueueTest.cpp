#include "platform/DispatchQueue.h"

#include "platform/ExceptionReport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

using platform::DispatchQueue;

TEST(DispatchQueue, RunsBlocksOfManyThreadsOneAtATimeAndEachThreadsInOrder) {
    constexpr int threads = 4;
    constexpr int perThread = 2000;
    std::vector<int> next(threads, 0); // unguarded on purpose: the queue is the guard
    {
        DispatchQueue queue("com.quarnel.test");
        std::vector<std::thread> submitters;
        submitters.reserve(threads);
        for (int t = 0; t < threads; ++t) {
            submitters.emplace_back([&queue, &next, t] {
                for (int i = 0; i < perThread; ++i)
                    queue.async(
                        [&next, t, i] { EXPECT_EQ(next[static_cast<std::size_t>(t)]++, i); });
            });
        }
        for (std::thread& submitter : submitters)
            submitter.join();
    } // the queue waits for its blocks
    EXPECT_EQ(next, std::vector<int>(threads, perThread));
}

TEST(DispatchQueue, ABlockThatWaitsDoesNotHoldUpOtherQueues) {
    DispatchQueue slow("com.quarnel.test.slow");
    DispatchQueue fast("com.quarnel.test.fast");
    std::atomic<bool> released = false;
    slow.async([&] { released.wait(false); });
    bool ran = false;
    fast.async([&] { ran = true; });
    fast.drain();
    EXPECT_TRUE(ran);
    released = true;
    released.notify_all();
}

TEST(DispatchQueue, ReportsExceptionsAndReleasesWhatABlockHoldsBeforeItCountsAsRun) {
    static std::atomic<unsigned> place;
    const auto previous = platform::replaceExceptionHook(
        [](unsigned where, const std::exception_ptr&) noexcept { place = where; });
    DispatchQueue queue("com.quarnel.test");
    const auto held = std::make_shared<int>(0);
    queue.async([held] { throw std::runtime_error("from a block"); });
    queue.drain();
    platform::replaceExceptionHook(previous);
    EXPECT_EQ(place, platform::kExceptionInDispatchQueue);
    EXPECT_EQ(held.use_count(), 1);
}
