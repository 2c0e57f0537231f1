#include "platform/loop/RunLoop.h"
#include "platform/loop/RunLoopSource.h"
#include "platform/loop/Timer.h"
#include "support/ManualClock.h"
#include "support/SystemLogRecorder.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace std::chrono_literals;
using platform::FileDescriptor;
using platform::RunLoop;
using platform::RunLoopSource;
using platform::Timer;

namespace {

/// A descriptor that is ready until it is read.
class Bell {
  public:
    void ring() const {
        const std::uint64_t one = 1;
        ASSERT_EQ(::write(descriptor_.get(), &one, sizeof one), ssize_t{sizeof one});
    }
    void silence() const {
        std::uint64_t count = 0;
        ASSERT_EQ(::read(descriptor_.get(), &count, sizeof count), ssize_t{sizeof count});
    }
    int descriptor() const { return descriptor_.get(); }

  private:
    FileDescriptor descriptor_{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
};

class RunLoopTest : public testing::Test {
  protected:
    support::ManualClock clock_;
    RunLoop loop_;
    std::string order_;

    std::function<void()> note(char letter) {
        return [this, letter] { order_ += letter; };
    }

    std::unique_ptr<RunLoopSource> serve(const Bell& bell, std::function<void()> handler) {
        return RunLoopSource::create(loop_, bell.descriptor(), RunLoopSource::reading,
                                     std::move(handler));
    }
};

} // namespace

TEST_F(RunLoopTest, TimersFireOnceInTheOrderOfTheirDeadlinesAndNotBefore) {
    Timer late(loop_, note('c'));
    Timer early(loop_, note('a'));
    Timer alsoEarly(loop_, note('b'));
    late.start(30ms);
    early.start(10ms);
    alsoEarly.start(10ms);

    clock_.advance(10ms - 1ns);
    loop_.turn();
    EXPECT_EQ(order_, "");
    clock_.advance(1ns);
    loop_.turn();
    EXPECT_EQ(order_, "ab");
    EXPECT_FALSE(early.isActive());
    clock_.advance(1h);
    loop_.turn();
    loop_.turn();
    EXPECT_EQ(order_, "abc");
}

TEST_F(RunLoopTest, ATimerThatStartsItselfInThePastLeavesTheOthersTheirTurn) {
    std::optional<Timer> late;
    late.emplace(loop_, [&] {
        order_ += 'l';
        late->startAt(clock_.now() - 1h);
    });
    Timer other(loop_, note('o'));
    late->start(0ms);
    other.start(10ms);
    clock_.advance(10ms);
    loop_.turn();
    loop_.turn();
    EXPECT_EQ(order_, "lol");
}

TEST_F(RunLoopTest, ATimersActionMayDestroyItAndOthers) {
    auto victim = std::make_unique<Timer>(loop_, note('v'));
    std::unique_ptr<Timer> timer;
    timer = std::make_unique<Timer>(loop_, [&, text = std::string("captured in the action")] {
        victim.reset();
        timer.reset();
        order_ += text.front();
    });
    timer->start(1ms);
    victim->start(2ms);
    clock_.advance(1s);
    loop_.turn();
    EXPECT_EQ(order_, "c");
}

// The heap with its postponed moves against the obvious model.
TEST_F(RunLoopTest, ManyTimersStartedStoppedAndDestroyedAtRandomFireLikeASortedList) {
    std::mt19937 random(20);
    std::array<std::unique_ptr<Timer>, 40> timers;
    std::array<std::optional<platform::MonotonicClock::time_point>, 40> expected;
    std::vector<std::size_t> fired;
    for (int step = 0; step < 20000; ++step) {
        const std::size_t i = random() % timers.size();
        const auto delay = std::chrono::milliseconds(random() % 200);
        switch (random() % 4) {
        case 0:
        case 1:
            if (timers[i] == nullptr)
                timers[i] = std::make_unique<Timer>(loop_, [&fired, i] { fired.push_back(i); });
            timers[i]->start(delay);
            expected[i] = platform::MonotonicClock::now() + delay;
            break;
        case 2:
            if (step % 2 == 0)
                timers[i].reset();
            else if (timers[i] != nullptr)
                timers[i]->stop();
            expected[i].reset();
            break;
        default:
            clock_.advance(delay / 8);
            loop_.turn();
            for (const std::size_t index : fired) {
                ASSERT_TRUE(expected[index].has_value());
                ASSERT_LE(*expected[index], platform::MonotonicClock::now());
                expected[index].reset();
            }
            fired.clear();
            for (const auto& deadline : expected)
                ASSERT_TRUE(!deadline || *deadline > platform::MonotonicClock::now());
        }
    }
}

TEST_F(RunLoopTest, DataOfManySourcesIsServedBeforeTheirTimersToo) {
    constexpr std::size_t count = 600; // more than the kernel tells at once
    std::vector<Bell> bells(count);
    std::vector<std::unique_ptr<Timer>> timeouts;
    std::vector<std::unique_ptr<RunLoopSource>> sources;
    for (Bell& bell : bells) {
        Timer& timeout = *timeouts.emplace_back(std::make_unique<Timer>(loop_, note('t')));
        sources.push_back(serve(bell, [&bell, &timeout] {
            bell.silence();
            timeout.start(100ms);
        }));
        timeout.start(100ms);
        bell.ring();
    }
    clock_.advance(150ms);
    loop_.turn();
    EXPECT_EQ(order_, "");
}

TEST_F(RunLoopTest, SourcesThatAreAlwaysReadyDoNotKeepTimersFromFiring) {
    constexpr std::size_t count = 600;
    std::vector<Bell> bells(count);
    std::vector<std::unique_ptr<RunLoopSource>> sources;
    for (Bell& bell : bells) {
        sources.push_back(serve(bell, [] { /* and stays ready */ }));
        bell.ring();
    }
    Timer timer(loop_, note('t'));
    timer.start(0ms);
    loop_.turn();
    EXPECT_EQ(order_, "t");
}

TEST_F(RunLoopTest, ASourceDestroyedWhileItsEventIsWaitingIsNotCalled) {
    const Bell first;
    const Bell second;
    std::unique_ptr<RunLoopSource> sources[2];
    int calls = 0;
    const auto handler = [&] {
        ++calls;
        sources[0].reset();
        sources[1].reset();
    };
    sources[0] = serve(first, handler);
    sources[1] = serve(second, handler);
    first.ring();
    second.ring();
    loop_.turn();
    loop_.turn();
    EXPECT_EQ(calls, 1);
}

TEST_F(RunLoopTest, ACallbackThatRunsANestedLoopBlocksNoOther) {
    const Bell dialog;
    const Bell other;
    Timer timer(loop_, note('t'));
    const auto dialogSource = serve(dialog, [&] {
        dialog.silence();
        timer.start(1ms);
        loop_.post(note('p'));
        other.ring();
        clock_.advance(1ms);
        loop_.turn();
        order_ += '|';
    });
    const auto otherSource = serve(other, [&] {
        other.silence();
        order_ += 'o';
    });
    dialog.ring();
    loop_.turn();
    EXPECT_EQ(order_, "opt|");
}

TEST_F(RunLoopTest, CallsPostedBeforeACallbacksOwnLoopAreMadeInsideIt) {
    loop_.post([&] {
        loop_.turn();
        order_ += '|';
    });
    loop_.post(note('a'));
    loop_.turn();
    EXPECT_EQ(order_, "a|");
}

TEST_F(RunLoopTest, WhatAPostedCallHoldsMayPostWhenItGoes) {
    const auto postsAtTheEnd = [this](void*) { loop_.post(note('b')); };
    loop_.post([this, held = std::shared_ptr<void>(&order_, postsAtTheEnd)] { order_ += 'a'; });
    loop_.turn();
    loop_.turn();
    EXPECT_EQ(order_, "ab");
}

TEST_F(RunLoopTest, ExceptionsOfCallbacksAreReportedAndTheLoopGoesOn) {
    const support::SystemLogRecorder log;
    const Bell bell;
    bell.ring();
    const auto thrower = [] { throw std::runtime_error("from a callback"); };
    const auto source = serve(bell, thrower);
    Timer timer(loop_, thrower);
    timer.start(0ms);
    loop_.post(thrower);
    loop_.post(note('a'));
    loop_.turn();
    EXPECT_EQ(order_, "a");
    EXPECT_EQ(log.count("from a callback"), 3U) << "of source, call and timer";
}

TEST(RunLoop, ServesPostsOfOtherThreadsInTheirOrderUntilItIsStopped) {
    RunLoop loop;
    constexpr int perThread = 1000;
    std::array<int, 2> next{};
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < next.size(); ++t) {
        threads.emplace_back([&loop, &next, t] {
            for (int i = 0; i < perThread; ++i) {
                loop.post([&loop, &next, t, i] {
                    EXPECT_EQ(next[t]++, i);
                    if (next[0] == perThread && next[1] == perThread)
                        loop.stop();
                });
            }
        });
    }
    loop.run();
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(next, (std::array<int, 2>{perThread, perThread}));
}

TEST_F(RunLoopTest, ARefusedSourceLeavesTheOneThatWatchesTheDescriptorAlone) {
    const Bell bell;
    int calls = 0;
    const auto source = serve(bell, [&] {
        bell.silence();
        ++calls;
    });
    EXPECT_EQ(serve(bell, [] {}), nullptr);
    EXPECT_EQ(errno, EEXIST);
    bell.ring();
    loop_.turn();
    EXPECT_EQ(calls, 1);
}
