#include "Harness.h"

#include "framework/async/queue.h"

#include <asio/post.hpp>
#include <asio/strand.hpp>
#include <asio/thread_pool.hpp>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <latch>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t tasks = 1'000'000;
constexpr unsigned threads = 2;

// A background queue keeps to as many threads as there are processors, like the pool of two.
constexpr std::int32_t background = -254;

// The pool may grow for it, up to the system's limit.
constexpr std::int32_t ordinary = 2;

double runOurs(bool serial, std::int32_t priority) {
    QN::async::queue queue("bench", serial, priority);
    return bench::nanosecondsEach(tasks, [&] {
        for (std::size_t i = 0; i < tasks; ++i)
            queue.enqueue([] {});
        queue.wait();
    });
}

template <typename Executor>
double runAsio(asio::thread_pool& pool, const Executor& executor) {
    return bench::nanosecondsEach(tasks, [&] {
        for (std::size_t i = 0; i < tasks; ++i)
            asio::post(executor, [] {});
        pool.join();
    });
}

double serialAsio() {
    asio::thread_pool pool(threads);
    return runAsio(pool, asio::make_strand(pool));
}

double concurrentAsio() {
    asio::thread_pool pool(threads);
    return runAsio(pool, pool.get_executor());
}

/// Microseconds from posting a task to its start, the median of many, each on a pool that has had
/// the time to fall asleep.
template <typename Post>
double latency(const Post& post) {
    constexpr int samples = 400;
    std::vector<double> delays;
    for (int i = 0; i < samples; ++i) {
        std::this_thread::sleep_for(300us);
        std::latch started(1);
        Clock::time_point start;
        const Clock::time_point posted = Clock::now();
        post([&] {
            start = Clock::now();
            started.count_down();
        });
        started.wait();
        delays.push_back(std::chrono::duration<double, std::micro>(start - posted).count());
    }
    std::nth_element(delays.begin(), delays.begin() + samples / 2, delays.end());
    return delays[samples / 2];
}

double latencyOurs() {
    QN::async::queue queue("bench", false, background);
    return latency([&](auto task) { queue.enqueue(task); });
}

double latencyAsio() {
    asio::thread_pool pool(threads);
    return latency([&](auto task) { asio::post(pool, task); });
}

/// What the threads of the pool have done so far: how often they went to sleep or were interrupted,
/// and the time they have run.
struct Activity {
    unsigned threads = 0;
    std::uint64_t switches = 0;
    double microseconds = 0;
};

Activity activityOfPool() {
    Activity sum;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string name;
        std::ifstream(thread.path() / "comm") >> name;
        if (!name.starts_with("QN::async"))
            continue;
        ++sum.threads;
        std::ifstream status(thread.path() / "status");
        for (std::string word; status >> word;) {
            std::uint64_t count = 0;
            if (word.ends_with("voluntary_ctxt_switches:") && status >> count)
                sum.switches += count;
        }
        double nanoseconds = 0;
        std::ifstream(thread.path() / "schedstat") >> nanoseconds;
        sum.microseconds += nanoseconds / 1000;
    }
    return sum;
}

Activity activityOfIdlePool() {
    {
        QN::async::queue queue("bench", false, background);
        std::latch both(threads);
        for (unsigned i = 0; i < threads; ++i)
            queue.enqueue([&] { both.arrive_and_wait(); });
    }
    std::this_thread::sleep_for(50ms);
    const Activity before = activityOfPool();
    std::this_thread::sleep_for(1s);
    const Activity after = activityOfPool();
    if (before.threads < 1 + threads || after.threads != before.threads)
        throw std::runtime_error("the pool's threads cannot be found");
    return {after.threads, after.switches - before.switches,
            after.microseconds - before.microseconds};
}

[[maybe_unused]] const bool added = [] {
    bench::addFigure({"pool/serial", "a million empty tasks on a serial queue", "ns/task",
                      [] { return runOurs(true, background); }, "asio strand", &serialAsio});
    bench::addFigure({"pool/concurrent", "a million empty tasks on a concurrent queue", "ns/task",
                      [] { return runOurs(false, background); }, "asio thread_pool(2)",
                      &concurrentAsio});
    bench::addFigure(
        {"pool/concurrent/ordinary", "an empty task, by a queue that the pool grows for", "ns/task",
         [] { return runOurs(false, ordinary); }, "asio thread_pool(2)", &concurrentAsio});
    bench::addFigure({"pool/latency", "from post to start on an idle pool", "us", &latencyOurs,
                      "asio thread_pool(2)", &latencyAsio});
    bench::addFigure({"pool/idle",
                      "context switches of the idle pool in a second",
                      "switches",
                      [] { return static_cast<double>(activityOfIdlePool().switches); },
                      "",
                      {}});
    return bench::addFigure({"pool/idle/cpu",
                             "processor time of the idle pool in a second",
                             "us",
                             [] { return activityOfIdlePool().microseconds; },
                             "",
                             {}});
}();

} // namespace
