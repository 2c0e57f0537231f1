#include "Harness.h"
#include "WireScene.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <limits>
#include <stdexcept>
#include <string>
#include <sys/resource.h>

namespace {

using bench::Bare;
using bench::cpuOf;
using bench::cpuTime;
using bench::Log;
using bench::Ours;
using bench::Scene;
using bench::Told;
using bench::WirePlugins;

template <typename Server>
double stream(std::size_t connections) {
    return Scene<Server>().stream(connections);
}

/// As a thousand plug-ins send that report 20 to 30 times a second, whatever their number here:
/// only that number differs from figure to figure. With the time that the system takes to wake a
/// thread, a message comes every 35 to 50 us.
template <typename Server>
double paced(std::size_t connections) {
    constexpr std::size_t messages = 8000;
    constexpr std::chrono::microseconds interval{20};
    Scene<Server> scene;
    WirePlugins plugins = scene.connect(connections);
    Told::awaited = messages;
    auto driver = scene.start([&] { plugins.sendPaced(messages, interval, Told::messages); });
    const double time = cpuOf([&] { scene.run(); });
    driver.get();
    Told::expect(plugins);
    return time / static_cast<double>(messages);
}

/// Of the least of several, since a quotient doubles what other programs do to a figure.
template <typename Server>
double pacedGrowth() {
    constexpr int times = 3;
    double few = std::numeric_limits<double>::max();
    double many = few;
    for (int i = 0; i < times; ++i) {
        few = std::min(few, paced<Server>(10));
        many = std::min(many, paced<Server>(1000));
    }
    return many / few;
}

/// Microseconds for each plug-in, until the log has been written.
template <typename Server>
double oneStorm() {
    constexpr std::size_t connections = 1000;
    Log log;
    Scene<Server> scene(&log);
    WirePlugins plugins;
    double time = -cpuTime(CLOCK_PROCESS_CPUTIME_ID);
    auto driver = scene.start([&] { plugins.checkIn(scene.path(), connections); });
    // The callback comes when there has been no check-in for a moment.
    do {
        scene.run();
    } while (scene.server().checkedIn() < connections);
    time -= driver.get();
    scene.server().closeLog();
    time += cpuTime(CLOCK_PROCESS_CPUTIME_ID);
    log.expectLines(connections);
    return time / connections / 1000;
}

template <typename Server>
double checkinStorm() {
    constexpr int storms = 8;
    double time = 0;
    for (int i = 0; i < storms; ++i)
        time += oneStorm<Server>();
    return time / storms;
}

/// The plug-ins read on a thread of their own, so that neither server finds its sockets in the
/// cache because it has read for them.
template <typename Server>
double broadcast() {
    constexpr std::size_t connections = 1000;
    constexpr std::int32_t commands = 200;
    Scene<Server> scene;
    WirePlugins plugins = scene.connect(connections);
    std::atomic<std::int32_t> taken = 0; // commands that all have got; -1 when one has not
    double time = -cpuTime(CLOCK_PROCESS_CPUTIME_ID);
    auto driver = scene.start([&] {
        const auto tell = [&](std::int32_t count) {
            taken = count;
            taken.notify_one();
        };
        try {
            for (std::int32_t i = 0; i < commands; ++i) {
                plugins.takeCommand(i);
                tell(i + 1);
            }
        } catch (...) {
            tell(-1);
            throw;
        }
    });
    for (std::int32_t i = 0; i < commands && taken >= 0; ++i) {
        scene.server().sendMessage({kMVCommSetVolume, 1, 0, i});
        taken.wait(i);
    }
    time -= driver.get();
    time += cpuTime(CLOCK_PROCESS_CPUTIME_ID);
    return time / commands / 1000;
}

/// Both take a plug-in for silent once, 0.1 s after its last message.
template <typename Server>
void expectResets() {
    constexpr std::size_t connections = 3;
    Scene<Server> scene;
    WirePlugins plugins = scene.connect(connections);
    plugins.sendActivity(2);
    const auto begin = std::chrono::steady_clock::now();
    Told::awaitedSilences = connections;
    scene.run();
    Told::expect(plugins);
    if (std::chrono::steady_clock::now() - begin < std::chrono::milliseconds(95))
        throw std::runtime_error("activity is reset too early");
}

std::shared_ptr<void> checkServers() {
    expectResets<Ours>();
    expectResets<Bare>();
    return nullptr;
}

/// Both ends of a thousand connections and what the process has besides.
bool mayHaveThousands() {
    constexpr rlim_t needed = 2100;
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
    if (limit.rlim_cur >= needed)
        return true;
    std::fprintf(stderr,
                 "The figures with 1000 connections are left out: they take %llu descriptors, the "
                 "limit is %llu.\n",
                 static_cast<unsigned long long>(needed),
                 static_cast<unsigned long long>(limit.rlim_cur));
    return false;
}

bool add(const std::string& name, const std::string& metric, const std::string& unit,
         const std::function<double()>& ours, const std::function<double()>& peer) {
    return bench::addFigure({.name = name,
                             .metric = metric,
                             .unit = unit,
                             .ours = ours,
                             .peerName = "bare epoll loop",
                             .peer = peer,
                             .surroundings = &checkServers});
}

bool addWith(std::size_t connections) {
    const std::string number = std::to_string(connections);
    add(
        "wire/stream/" + number, "CPU for an activity message while more wait", "ns",
        [=] { return stream<Ours>(connections); }, [=] { return stream<Bare>(connections); });
    return add(
        "wire/paced/" + number, "CPU for an activity message that comes alone", "ns",
        [=] { return paced<Ours>(connections); }, [=] { return paced<Bare>(connections); });
}

bool addAll() {
    addWith(10);
    addWith(100);
    if (!mayHaveThousands())
        return false;
    addWith(1000);
    add("wire/paced/growth", "the same with 1000 connections, by that with 10", "times",
        &pacedGrowth<Ours>, &pacedGrowth<Bare>);
    add("wire/checkin-storm", "CPU for one of 1000 plug-ins that come at once", "us",
        &checkinStorm<Ours>, &checkinStorm<Bare>);
    return add("wire/broadcast", "CPU for a command to 1000 plug-ins", "us", &broadcast<Ours>,
               &broadcast<Bare>);
}

[[maybe_unused]] const bool added = addAll();

} // namespace
