#include "Harness.h"
#include "PluginStage.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

// The plug-in as a whole, on real sound, beside a meter without anything around it.
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using support::ChildProcess;
using Clock = platform::MonotonicClock;
using namespace bench;

/// A program that measures all that plays, from the moment on that it does.
class Measuring {
  public:
    static Measuring ours() {
        PluginStage::current().application().forgetLevels();
        return Measuring(TONVALE_PLUGIN,
                         [](const ChildProcess&) { return PluginStage::current().hearsAll(); });
    }
    static Measuring peer() {
        const std::string told =
            "measures " + std::to_string(PluginStage::current().programs()) + "\n";
        return Measuring(TONVALE_BARE_METER, [told](const ChildProcess& process) {
            return process.output().find(told) != std::string::npos;
        });
    }

    pid_t pid() const noexcept { return process_.pid(); }

  private:
    Measuring(const std::string& program, const std::function<bool(const ChildProcess&)>& measures)
        : process_({program}) {
        await([&] { return measures(process_); }, "not every program is measured", process_);
        rest(settling);
    }

    static constexpr std::chrono::milliseconds settling = 1s;

    ChildProcess process_;
};

constexpr auto shareIsTaken = 4000ms;

/// How many percent of a processor `time` grows by.
double shareOf(const std::function<Clock::duration()>& time) {
    constexpr double percent = 100;
    const auto begin = Clock::now();
    const auto before = time();
    rest(shareIsTaken);
    const auto spent = time() - before;
    return percent * milliseconds(spent) / milliseconds(Clock::now() - begin);
}

double shareOfProgram(const Measuring& program) {
    return shareOf([&program] { return processorTime(program.pid()); });
}

/// What the services spend with a program beyond what they spend without.
double shareOfServices(Measuring (*start)()) {
    constexpr auto tidyingUp = 2s; // after the program before
    const auto time = [] { return PluginStage::current().timeOfServices(); };
    rest(tidyingUp);
    const double without = shareOf(time);
    const Measuring program = start();
    return shareOf(time) - without;
}

/// Context switches of a process so far, by thread.
std::map<std::string, std::uint64_t> switchesOf(pid_t pid) {
    std::map<std::string, std::uint64_t> counts;
    for (const auto& thread : fs::directory_iterator("/proc/" + std::to_string(pid) + "/task")) {
        std::ifstream status(thread.path() / "status");
        for (std::string line; std::getline(status, line);) {
            const auto key = line.find("voluntary_ctxt_switches:");
            if (key != std::string::npos)
                counts[thread.path().filename()] += std::stoull(line.substr(line.find(':') + 1));
        }
    }
    return counts;
}

double idleSwitches() {
    constexpr auto soundServerSettles = 10s; // it lets go of an idle sink after five
    constexpr auto minute = 60s;
    Player player;
    player.start();
    const FoundPlugin plugin;
    untilLevel(player);
    player.pause();
    rest(soundServerSettles);
    auto before = switchesOf(plugin.pid());
    rest(minute);
    std::uint64_t switches = 0;
    for (const auto& [thread, count] : switchesOf(plugin.pid()))
        switches += count - before[thread];
    return static_cast<double>(switches);
}

constexpr int slowRounds = 5; // of figures that wait for many seconds
constexpr const char* bareMeter = "bare 25 Hz meter";

template <int programs>
bool addShares(const std::string& name) {
    return bench::addFigure({.name = name,
                             .metric = "processor time of the plug-in, " +
                                       std::to_string(programs) + " playing, application listening",
                             .unit = "% core",
                             .ours = [] { return shareOfProgram(Measuring::ours()); },
                             .peerName = bareMeter,
                             .peer = [] { return shareOfProgram(Measuring::peer()); },
                             .rounds = slowRounds,
                             .surroundings = &makePluginStage<programs>}) &&
           bench::addFigure(
               {.name = name + "/daemons",
                .metric = "what that adds to pipewire, wireplumber and pipewire-pulse together",
                .unit = "% core",
                .ours = [] { return shareOfServices(&Measuring::ours); },
                .peerName = bareMeter,
                .peer = [] { return shareOfServices(&Measuring::peer); },
                .rounds = slowRounds,
                .surroundings = &makePluginStage<programs>});
}

constexpr int idleRounds = 2;

[[maybe_unused]] const bool added[] = {
    addShares<20>("plugin/cpu/20"),
    addShares<1>("plugin/one"),
    bench::addFigure(
        {.name = "plugin/idle",
         .metric = "context switches of all threads, one program paused, application listening",
         .unit = "/minute",
         .ours = &idleSwitches,
         .peerName = {},
         .peer = {},
         .rounds = idleRounds,
         .surroundings = &makePluginStage<0>}),
};

} // namespace
