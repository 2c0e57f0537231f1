#include "platform/loop/DispatchQueue.h"

#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "support/SystemLogRecorder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace std::chrono_literals;
using platform::DispatchQueue;

namespace {

/// A door that blocks wait at until it is opened.
class Door {
  public:
    void open() {
        open_ = true;
        open_.notify_all();
    }
    void wait() const { open_.wait(false); }

  private:
    std::atomic<bool> open_ = false;
};

} // namespace

TEST(DispatchQueue, RunsBlocksOfManyThreadsOneAtATimeAndEachThreadsInOrder) {
    constexpr int threads = 4;
    constexpr int perThread = 2000;
    const auto queue = DispatchQueue::makeSerial("com.quarnel.test");
    std::vector<int> next(threads, 0); // unguarded on purpose: the queue is the guard
    std::vector<std::thread> submitters;
    submitters.reserve(threads);
    for (std::size_t t = 0; t < threads; ++t) {
        submitters.emplace_back([&queue, &next, t] {
            for (int i = 0; i < perThread; ++i) {
                const auto block = [&next, t, i] { EXPECT_EQ(next[t]++, i); };
                i % 10 == 0 ? queue->sync(block) : queue->async(block);
            }
        });
    }
    for (std::thread& submitter : submitters)
        submitter.join();
    queue->sync([] {});
    EXPECT_EQ(next, std::vector<int>(threads, perThread));
}

TEST(DispatchQueue, ABlockThatWaitsHoldsUpNeitherOtherQueuesNorTheGlobalOne) {
    const auto slow = DispatchQueue::makeSerial("com.quarnel.test.slow");
    const auto fast = DispatchQueue::makeSerial("com.quarnel.test.fast");
    Door door;
    slow->async([&] { door.wait(); });
    bool ran = false;
    fast->async([&] { ran = true; });
    fast->sync([] {});
    EXPECT_TRUE(ran);
    Door global;
    DispatchQueue::global()->async([&] { global.open(); });
    global.wait();
    door.open();
    slow->sync([] {});
}

TEST(DispatchQueue, SyncRunsInPlaceFromWithinAndHandsExceptionsToItsCaller) {
    const auto queue = DispatchQueue::makeSerial("com.quarnel.test");
    const auto targeting = DispatchQueue::makeSerial("com.quarnel.test.targeting");
    targeting->setTarget(queue);
    std::string order;
    targeting->sync([&] {
        EXPECT_TRUE(queue->isCurrent());
        queue->async([&] { order += 'c'; });
        queue->sync([&] { order += 'a'; });
        targeting->sync([&] { order += 'b'; });
    });
    queue->sync([] {});
    EXPECT_EQ(order, "abc");
    EXPECT_FALSE(queue->isCurrent());
    EXPECT_THROW(queue->sync([] { throw std::runtime_error("to the caller"); }),
                 std::runtime_error);
    Door door;
    queue->async([&] { door.wait(); });
    std::thread opener([&] {
        std::this_thread::sleep_for(1ms); // most likely sync() waits by then; it holds if not
        door.open();
    });
    EXPECT_THROW(queue->sync([] { throw std::runtime_error("after a wait"); }), std::runtime_error);
    opener.join();
}

TEST(DispatchQueue, ANewTargetTakesOverTheBlocksThatHaveNotBegun) {
    const auto queue = DispatchQueue::makeSerial("com.quarnel.test");
    const auto first = DispatchQueue::makeSerial("com.quarnel.test.first");
    const auto second = DispatchQueue::makeSerial("com.quarnel.test.second");
    queue->setTarget(first);
    Door begun;
    Door door;
    std::string order;
    queue->async([&] {
        begun.open();
        door.wait();
        EXPECT_TRUE(first->isCurrent());
        order += '1';
    });
    for (int i = 0; i < 3; ++i) {
        queue->async([&] {
            EXPECT_TRUE(second->isCurrent());
            order += '2';
        });
    }
    begun.wait();
    queue->setTarget(second);
    door.open();
    queue->sync([] {});
    EXPECT_EQ(order, "1222");
}

TEST(DispatchQueue, ReportsExceptionsAndLetsGoOfWhatItsBlocksHold) {
    const support::SystemLogRecorder log;
    auto queue = DispatchQueue::makeSerial("com.quarnel.test");
    const std::weak_ptr<DispatchQueue> gone = queue;
    const auto held = std::make_shared<int>(0);
    queue->async([held] { throw std::runtime_error("from a block"); });
    queue->sync([] {});
    EXPECT_EQ(log.count("from a block"), 1U);
    EXPECT_EQ(held.use_count(), 1);
    queue.reset();
    EXPECT_TRUE(support::waitUntil([&] { return gone.expired(); }));
}

TEST(MainQueue, IsServedByARunLoopOrDrainedByHand) {
    const auto& queue = DispatchQueue::main();
    std::string order;
    queue->async([&] {
        order += 'a';
        queue->async([&] { order += 'b'; });
    });
    platform::drainMainQueue();
    EXPECT_EQ(order, "ab");

    queue->async([&] { order += 'c'; }); // before there is a loop
    platform::RunLoop loop;
    const platform::MainQueueService service(loop);
    std::thread other([&] {
        queue->sync([&] {
            order += 'd';
            EXPECT_TRUE(queue->isCurrent());
        });
        loop.stop();
    });
    loop.run();
    other.join();
    EXPECT_EQ(order, "abcd");
}

// As a timer's queue that was pointed at the main queue: the main thread must not wait for itself.
TEST(MainQueue, TheMainThreadMaySyncOnQueuesThatTargetIt) {
    const auto queue = DispatchQueue::makeSerial("com.quarnel.test");
    const auto middle = DispatchQueue::makeSerial("com.quarnel.test.middle");
    middle->setTarget(DispatchQueue::main());
    queue->setTarget(middle);
    std::string order;
    queue->sync([&] { order += 'a'; });
    queue->async([&] { order += 'b'; });
    queue->sync([&] { order += 'c'; });
    EXPECT_EQ(order, "abc");
    platform::drainMainQueue();
}

// As a timer that one thread asks for a run while its target's owner cancels it.
TEST(DispatchQueue, SyncFromOutsideAndFromABlockOfTheTargetDoNotWaitForEachOther) {
    const auto target = DispatchQueue::makeSerial("com.quarnel.test.target");
    const auto queue = DispatchQueue::makeSerial("com.quarnel.test");
    queue->setTarget(target);
    std::atomic<int> count = 0;
    constexpr int rounds = 20;
    for (int round = 0; round < rounds; ++round) {
        Door begun;
        std::thread outside([&] {
            begun.wait();
            queue->sync([&] { ++count; });
        });
        target->sync([&] {
            begun.open();
            for (int i = 0; i < 20; ++i) {
                queue->sync([&] { ++count; });
                std::this_thread::yield();
            }
        });
        outside.join();
    }
    EXPECT_EQ(count, rounds * 21);
}

TEST(DispatchQueue, SyncFollowsItsQueueToANewTarget) {
    const auto queue = DispatchQueue::makeSerial("com.quarnel.test");
    const auto former = DispatchQueue::makeSerial("com.quarnel.test.former");
    const auto other = DispatchQueue::makeSerial("com.quarnel.test.other");
    std::string order;
    queue->setTarget(former);
    former->sync([&] { // so that the blocks are run in place
        queue->async([&] { order += former->isCurrent() ? "a" : "?"; });
        queue->async([&] { queue->setTarget(other); });
        queue->async([&] { order += other->isCurrent() ? "b" : "?"; });
        queue->sync([&] { order += other->isCurrent() ? "c" : "?"; });
    });
    EXPECT_EQ(order, "abc");
}

// The queue moves to another target and back while its job waits in the first: then two have come
// to run its blocks.
TEST(DispatchQueue, AJobThatComesWhileAnotherRunsLeavesTheBlocksToIt) {
    const auto queue = DispatchQueue::makeSerial("com.quarnel.test");
    const auto first = DispatchQueue::makeSerial("com.quarnel.test.first");
    const auto second = DispatchQueue::makeSerial("com.quarnel.test.second");
    Door firstDoor;
    first->async([&] { firstDoor.wait(); });
    queue->setTarget(first);
    Door begun;
    Door door;
    std::atomic<bool> hasEnded = false;
    queue->async([&] {
        begun.open();
        door.wait();
        hasEnded = true;
    });
    queue->setTarget(second);
    begun.wait();
    bool ranInTurn = false;
    queue->async([&] { ranInTurn = hasEnded; });
    queue->setTarget(first);
    firstDoor.open();
    first->sync([] {}); // the job that waited there has come and gone
    door.open();
    queue->sync([] {});
    EXPECT_TRUE(ranInTurn);
}

TEST(DispatchQueue, StaysSerialWhileItIsRetargetedAndSyncedOn) {
    const auto queue = DispatchQueue::makeSerial("com.quarnel.test");
    const std::shared_ptr<DispatchQueue> targets[] = {
        DispatchQueue::makeSerial("com.quarnel.test.first"), DispatchQueue::global(),
        DispatchQueue::makeSerial("com.quarnel.test.second")};
    constexpr int each = 2000;
    int count = 0; // unguarded on purpose: the queue is the guard
    std::thread submitter([&] {
        for (int i = 0; i < each; ++i)
            queue->async([&] { ++count; });
    });
    std::thread waiter([&] {
        for (int i = 0; i < each; ++i)
            queue->sync([&] { ++count; });
    });
    for (std::size_t i = 0; i < each; ++i)
        queue->setTarget(targets[i % std::size(targets)]);
    submitter.join();
    waiter.join();
    queue->sync([] {});
    EXPECT_EQ(count, 2 * each);
}

// sync() waits for its turn in the former target while the queue runs on another one.
TEST(DispatchQueue, ASyncThatGetsItsTurnLateLeavesTheQueueToWhoeverRunsIt) {
    for (int round = 0; round < 20; ++round) {
        const auto queue = DispatchQueue::makeSerial("com.quarnel.test");
        const auto former = DispatchQueue::makeSerial("com.quarnel.test.former");
        Door formerDoor;
        former->async([&] { formerDoor.wait(); });
        queue->setTarget(former);
        std::thread waiter([&] { queue->sync([] {}); });
        std::this_thread::sleep_for(1ms); // most likely sync() waits by then; it holds if not

        Door begun;
        Door door;
        std::atomic<bool> isInside = false;
        queue->setTarget(DispatchQueue::global());
        queue->async([&] {
            isInside = true;
            begun.open();
            door.wait();
            isInside = false;
        });
        begun.wait();
        formerDoor.open();
        former->sync([] {}); // the waiter has had its turn there
        bool overlapped = false;
        queue->async([&] { overlapped = isInside; });
        Door marker;
        DispatchQueue::global()->async([&] { marker.open(); });
        marker.wait();
        door.open();
        waiter.join();
        queue->sync([] {});
        EXPECT_FALSE(overlapped);
    }
}
