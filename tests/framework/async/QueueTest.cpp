#include "framework/async/queue.h"

#include "platform/loop/BackgroundLoop.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/loop/RunLoop.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <future>
#include <latch>
#include <memory>
#include <optional>
#include <pthread.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using QN::async::queue;

TEST(Queue, SerialNeverRunsTwoTasksAtOnceAndKeepsEachSubmittersOrder) {
    constexpr std::size_t submitters = 4;
    constexpr int each = 5000;
    std::vector<int> next(submitters, 0); // unguarded on purpose: the queue is the guard
    int outOfOrder = 0;
    {
        queue serial("serial", true, 0);
        std::vector<std::thread> threads;
        threads.reserve(submitters);
        for (std::size_t t = 0; t < submitters; ++t) {
            threads.emplace_back([&, t] {
                for (int i = 0; i < each; ++i)
                    serial.enqueue([&, t, i] { outOfOrder += next[t]++ != i; });
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    } // the destructor drains
    EXPECT_EQ(next, std::vector<int>(submitters, each));
    EXPECT_EQ(outOfOrder, 0);
}

TEST(Queue, TasksThatWaitForEachOtherGetAThreadEach) {
    constexpr int together = 12;
    std::latch met(together);
    std::vector<std::unique_ptr<queue>> serial;
    queue concurrent("", false, 2);
    for (int i = 0; i < together / 2; ++i) {
        concurrent.enqueue([&] { met.arrive_and_wait(); });
        serial.push_back(std::make_unique<queue>("serial", true, 0));
        serial.back()->enqueue([&] { met.arrive_and_wait(); });
    }
    met.wait();
}

TEST(Queue, RefusesWhatCannotRun) {
    const auto textOf = [](const std::function<void()>& call) -> std::string {
        try {
            call();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return {};
    };
    auto serial = std::make_unique<queue>("serial", true, 0);
    EXPECT_EQ(textOf([&] { serial->enqueue(nullptr); }), "invalid task!");
    serial->suspend();
    EXPECT_EQ(textOf([&] { serial->wait(); }), "wait on suspended queue!");
    serial->resume();

    // The task goes on appending until the destructor, which waits for the task, has begun.
    std::string refusal;
    serial->enqueue([&, self = serial.get()] {
        while (refusal.empty())
            refusal = textOf([&] { self->enqueue([] {}); });
    });
    serial.reset();
    EXPECT_EQ(refusal, "zombie queue!");
}

TEST(Queue, SuspendedStartsNothingUntilResumedOrDestroyed) {
    for (const bool isDestroyed : {false, true}) {
        std::atomic<int> runs = 0;
        std::optional<queue> suspended(std::in_place, "suspended", true, 0);
        suspended->suspend();
        suspended->suspend();
        suspended->enqueue([&] { ++runs; });
        suspended->resume();
        queue other("other", true, 0);
        other.enqueue([] {});
        other.wait();
        EXPECT_EQ(runs, 0);
        if (isDestroyed) {
            suspended.reset();
        } else {
            suspended->resume();
            suspended->wait();
        }
        EXPECT_EQ(runs, 1);
    }
}

TEST(Queue, ATaskThatDestroysItsOwnQueueReturnsAfterTheOthersThatRun) {
    std::latch destroying(1);
    std::latch bothRun(2);
    std::atomic<bool> otherEnded = false;
    std::latch done(1);
    auto concurrent = std::make_unique<queue>("own", false, 0);
    concurrent->enqueue([&] {
        bothRun.arrive_and_wait();
        destroying.wait();
        otherEnded = true;
    });
    std::latch appended(1);
    concurrent->enqueue([&] {
        appended.wait();
        bothRun.arrive_and_wait();
        destroying.count_down();
        concurrent.reset();
        EXPECT_TRUE(otherEnded);
        done.count_down();
    });
    appended.count_down();
    done.wait();
}

TEST(Queue, MayBeDestroyedWhileATaskIsOnItsWayToAWorker) {
    std::atomic<int> runs = 0;
    constexpr int each = 500;
    std::vector<std::thread> threads;
    for (const bool isSerial : {false, true}) {
        threads.emplace_back([&runs, isSerial] {
            for (int i = 0; i < each; ++i) {
                queue brief(std::string(100, 'b'), isSerial, i % 2 == 0 ? -254 : 0);
                brief.enqueue([&] { ++runs; });
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(runs, 2 * each);
}

TEST(Queue, ThreadsHaveNames) {
    const auto ownName = [] {
        std::array<char, 16> name{};
        ::pthread_getname_np(::pthread_self(), name.data(), name.size());
        return std::string(name.data());
    };
    std::string worker;
    queue serial("serial", true, 0);
    serial.enqueue([&] { worker = ownName(); });
    serial.wait();
    EXPECT_EQ(worker, "QN::async::work");

    std::promise<std::string> dispatch;
    platform::DispatchQueue::global()->async([&] { dispatch.set_value(ownName()); });
    EXPECT_EQ(dispatch.get_future().get(), "dispatch");
    std::promise<std::string> background;
    platform::backgroundLoop().post([&] { background.set_value(ownName()); });
    EXPECT_EQ(background.get_future().get(), "background loop");
}

TEST(Queue, PrintsExceptionsOfTasksAndGoesOn) {
    queue serial("thrower", true, -254);
    testing::internal::CaptureStdout();
    std::future<void> failed =
        serial.enqueueWithFuture([] { throw std::runtime_error("from a task"); });
    serial.enqueue([] { throw 5; });
    bool wentOn = false;
    serial.enqueue([&] { wentOn = true; });
    serial.wait();
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(wentOn);
    EXPECT_THROW(failed.get(), std::runtime_error);

    unsigned line = 0;
    ASSERT_EQ(std::sscanf(output.c_str(), "Exception @ %u", &line), 1) << output;
    const std::string number = std::to_string(line);
    EXPECT_EQ(output,
              "Exception @ " + number + ": from a task\nUnknown exception @ " + number + "\n");
}

TEST(Queue, ReleasesWhatATaskHoldsBeforeItCountsAsRun) {
    queue concurrent("holder", false, 0);
    for (int i = 0; i < 200; ++i) {
        const auto held = std::make_shared<int>(i);
        concurrent.enqueue([held] {});
        concurrent.wait();
        ASSERT_EQ(held.use_count(), 1);
    }
}
