// What cannot be tested in the test's own process. async_child WHAT NUMBER does one thing and ends
// with status 0 when it went as it should.
#include "framework/async/ThreadLimit.h"
#include "framework/async/manager.h"
#include "framework/async/queue.h"
#include "framework/monitor/QNItemContentChangeMonitor.h"
#include "framework/monitor/RLBGTimer.h"

#include "platform/base/SystemValue.h"
#include "platform/base/ThreadCalls.h"
#include "platform/loop/BackgroundLoop.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/loop/RunLoop.h"
#include "support/WaitUntil.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <latch>
#include <limits>
#include <memory>
#include <string_view>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <vector>

using namespace QN::async;

namespace {

std::uint32_t smallLimit = 4;

bool limitValue(const char* name, void* buffer, std::size_t size) noexcept {
    if (std::string_view(name) != "kern.wq_max_threads" || size != sizeof smallLimit)
        return false;
    std::memcpy(buffer, &smallLimit, size);
    return true;
}

/// What keeps the pool's tasks from ending until the manager has paused so many times.
class PausesBeforeOpening : public platform::ThreadCalls {
  public:
    void begin(int pauses) {
        left_ = pauses;
        ended_ = 0;
        isOpen_ = false;
    }

    void pause(std::chrono::nanoseconds time) noexcept override {
        if (time != std::chrono::milliseconds(100))
            std::_Exit(1);
        if (--left_ > 0)
            return;
        isOpen_ = true;
        isOpen_.notify_all();
        if (!support::waitUntil([this] { return ended_ >= static_cast<int>(smallLimit); }))
            std::_Exit(1);
        ThreadCalls::pause(time);
    }

    void pass() {
        isOpen_.wait(false);
        ++ended_;
    }

    int ended() const noexcept { return ended_; }

  private:
    std::atomic<int> left_ = 0;
    std::atomic<bool> isOpen_ = false;
    std::atomic<int> ended_ = 0;
};

/// More tasks than there may be threads, which wait until creation has failed so many times.
int limit(int failures) {
    platform::replaceSystemValueSource(&limitValue);
    static auto& gate = *new PausesBeforeOpening;
    gate.begin(failures);
    platform::replaceThreadCalls(&gate);
    queue concurrent("", false, 2);
    for (std::uint32_t i = 0; i < 2 * smallLimit; ++i)
        concurrent.enqueue([] { gate.pass(); });
    concurrent.wait();
    const manager& pool = manager::shared();
    return gate.ended() == 2 * static_cast<int>(smallLimit) && pool.workerCount() <= smallLimit &&
                   pool.statistics().creationFailures >= static_cast<std::uint64_t>(failures)
               ? 0
               : 1;
}

/// So many times: one failure at the limit, after which all goes well. The pool keeps its workers
/// in between, since it never has fewer than two.
int shortages(int times) {
    smallLimit = 2;
    for (int i = 0; i < times; ++i) {
        if (limit(1) != 0)
            return 1;
    }
    return 0;
}

/// The pool has grown by so many workers, and nobody gives it anything to do.
int shrink(int surplus) {
    const std::uint32_t workers = baseSize() + static_cast<std::uint32_t>(surplus);
    std::latch met(workers);
    std::latch end(1);
    queue concurrent("", false, 2);
    for (std::uint32_t i = 1; i < workers; ++i)
        concurrent.enqueue([&] { met.arrive_and_wait(); });
    concurrent.enqueue([&] {
        met.arrive_and_wait();
        end.wait();
    });
    const Statistics& statistics = manager::shared().statistics();
    if (!support::waitUntil([&] { return statistics.completions == workers - 1; }))
        return 1;
    // As long as a task runs, the manager looks now and then, and rests in between.
    const std::uint64_t before = statistics.passes;
    if (!support::waitUntil([&] { return statistics.passes > before + 1; }) ||
        statistics.passes > before + 4)
        return 1;
    end.count_down();
    concurrent.wait();
    return support::waitUntil([] { return manager::shared().workerCount() == baseSize(); }) ? 0 : 1;
}

/// A system that refuses so many threads before it gives one.
class Refusals : public platform::ThreadCalls {
  public:
    int start(pthread_t* thread, void* (*body)(void*), void* argument) noexcept override {
        return left.fetch_sub(1) > 0 ? EAGAIN : ThreadCalls::start(thread, body, argument);
    }
    void pause(std::chrono::nanoseconds time) noexcept override {
        ++pauses;
        ThreadCalls::pause(time);
    }

    std::atomic<int> left = 0;
    std::atomic<int> pauses = 0;
};

const Refusals& refuse(int threads) {
    static auto& refusals = *new Refusals;
    refusals.left = threads;
    platform::replaceThreadCalls(&refusals);
    return refusals;
}

int refusal(int failures) {
    queue serial("", true, 0);
    const Refusals& refusals = refuse(failures);
    bool ran = false;
    serial.enqueue([&] { ran = true; });
    serial.wait();
    const Statistics& statistics = manager::shared().statistics();
    return ran && refusals.pauses == failures - 1 &&
                   statistics.creationFailures == static_cast<std::uint64_t>(failures)
               ? 0
               : 1;
}

int noManager(int failures) {
    refuse(failures);
    try {
        const queue serial("", true, 0);
        return 1;
    } catch (const std::system_error& error) {
        if (error.code().value() != EAGAIN)
            return 1;
    }
    queue serial("", true, 0);
    bool ran = false;
    serial.enqueue([&] { ran = true; });
    serial.wait();
    return ran ? 0 : 1;
}

/// What dispatch queues are given waits until there is a thread, and nothing of it is lost.
int noDispatchThread(int failures) {
    refuse(failures);
    std::atomic<int> ran = 0;
    const auto serial = platform::DispatchQueue::makeSerial("com.quarnel.test");
    serial->async([&] { ++ran; });
    for (int i = 0; i < failures; ++i) {
        if (ran > 0)
            return 1;
        platform::DispatchQueue::global()->async([&] { ++ran; });
    }
    return support::waitUntil([&] { return ran == failures + 1; }) ? 0 : 1;
}

int noBackgroundLoop(int failures) {
    refuse(failures);
    for (int i = 0; i < failures; ++i) {
        try {
            platform::backgroundLoop();
            return 1;
        } catch (const std::system_error&) {
        }
    }
    std::latch served(1);
    platform::backgroundLoop().post([&] { served.count_down(); });
    served.wait();
    return 0;
}

/// A timer and a file that could not be served say so, and later ones are.
int noServiceForTimersAndFiles(int failures) {
    const auto queue = platform::DispatchQueue::makeSerial("com.quarnel.test");
    std::latch started(1);
    queue->async([&] { started.count_down(); });
    started.wait(); // there is a thread for queues
    refuse(std::numeric_limits<int>::max());
    std::atomic<int> lastKind = 0;
    const auto observe = [&] {
        return QNItemContentChangeMonitor::addObserverForPath(
            "/", queue, [&](const WatchedItem&, auto kind) { lastKind = kind; });
    };
    const auto refused = observe();
    if (!support::waitUntil([&] { return lastKind == QNItemNotMonitored; }))
        return 1;
    RLBGTimer timer(nullptr);
    std::atomic<int> runs = 0;
    for (int i = 0; i < failures; ++i) {
        try {
            timer.afterDelay(0, [&](void*) { runs += 100; });
            return 1;
        } catch (const std::system_error&) {
        }
    }
    refuse(0);
    timer.afterDelay(0, [&](void*) { ++runs; });
    lastKind = 0;
    const auto observer = observe();
    QNItemContentChangeMonitor::triggerChangeForItem(WatchedItem::path("/"));
    const bool isWell = support::waitUntil([&] { return runs == 1 && lastKind == 1; });
    for (const auto& each : {refused, observer})
        QNItemContentChangeMonitor::removeObserver(each);
    return isWell ? 0 : 1;
}

/// Whether a forked child in which `body` runs ends with 0 before long.
bool endsWell(const std::function<void()>& body) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(20);
        body();
        ::_exit(1);
    }
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

/// Forks while other threads hold the locks of a queue now and then. The child uses that queue and
/// a new one and then runs another program.
int forkAndExec(int times) {
    queue busy("busy", false, 2);
    std::atomic<bool> ends = false;
    std::vector<std::thread> submitters;
    submitters.reserve(2);
    for (int i = 0; i < 2; ++i) {
        submitters.emplace_back([&] {
            while (!ends) {
                busy.enqueue([] {});
                busy.wait();
            }
        });
    }
    bool allWell = true;
    for (int i = 0; i < times && allWell; ++i) {
        allWell = endsWell([&] {
            {
                queue own("own", true, 0);
                own.enqueue([] {});
                own.wait();
                busy.enqueue([] {});
                busy.wait();
            }
            ::execlp("true", "true", nullptr);
        });
    }
    ends = true;
    for (std::thread& submitter : submitters)
        submitter.join();
    return allWell ? 0 : 1;
}

/// Queues of all kinds with tasks that run, wait and are yet to run, as the process ends.
[[noreturn]] void endWithWorkInFlight(int turn) {
    static const auto queues = [] {
        auto* const made = new std::vector<std::unique_ptr<queue>>; // outlives the process's end
        for (int i = 0; i < 4; ++i)
            made->push_back(std::make_unique<queue>("in flight", i % 2 == 0, i < 2 ? -254 : 2));
        return made;
    }();
    static std::latch started(1);
    static std::atomic<unsigned> count = 0;
    for (const auto& each : *queues) {
        for (int i = 0; i < 50; ++i)
            each->enqueue([] { ++count; });
        each->enqueue([] { started.count_down(0); });
    }
    queues->back()->enqueue([] { started.count_down(); });
    queues->back()->enqueue([other = queues->front().get()] { other->wait(); });
    if (turn % 2 == 0)
        started.wait();
    static queue drained("destroyed at exit", true, -254);
    drained.enqueue([] { ++count; });
    std::exit(0);
}

int endAgainAndAgain(int times) {
    for (int i = 0; i < times; ++i) {
        if (!endsWell([i] { endWithWorkInFlight(i); })) // without a thread so far
            return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    struct Mode {
        std::string_view name;
        int (*run)(int number);
    };
    constexpr Mode modes[] = {{"limit", &limit},
                              {"shortages", &shortages},
                              {"shrink", &shrink},
                              {"refusal", &refusal},
                              {"no-manager", &noManager},
                              {"no-dispatch-thread", &noDispatchThread},
                              {"no-background-loop", &noBackgroundLoop},
                              {"no-service", &noServiceForTimersAndFiles},
                              {"fork", &forkAndExec},
                              {"end", &endAgainAndAgain}};
    if (argc == 3) {
        for (const Mode& mode : modes) {
            if (mode.name == argv[1])
                return mode.run(std::atoi(argv[2]));
        }
    }
    std::fprintf(stderr, "usage: async_child WHAT NUMBER\n");
    return 2;
}
