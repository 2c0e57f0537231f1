#include "Harness.h"

#include "platform/RunLoop.h"
#include "support/ChildProcess.h"
#include "support/GraphStream.h"
#include "support/ListeningApplication.h"
#include "support/PrivateAudioSession.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/SystemLogRecorder.h"
#include "support/WaitUntil.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

// The plug-in as a whole, on real sound, beside a meter without anything around it.
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using support::ChildProcess;
using support::GraphStream;
using support::PrivateAudioSession;
using Clock = platform::MonotonicClock;

/// Serves the application's sockets meanwhile.
void rest(std::chrono::milliseconds duration) {
    [[maybe_unused]] const bool never = support::waitUntil([] { return false; }, duration);
}

void await(const std::function<bool()>& condition, const char* what, const ChildProcess& program) {
    if (!support::waitUntil(condition))
        throw std::runtime_error(std::string(what) + "; the program said: " + program.output());
}

double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

/// Processor time that a process has had, all threads, those included that have ended.
Clock::duration processorTime(pid_t pid) {
    clockid_t clock = 0;
    timespec time{};
    if (::clock_getcpuclockid(pid, &clock) != 0 || ::clock_gettime(clock, &time) != 0)
        throw std::runtime_error("a process has ended");
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

/// An audio session, the application's side of the socket, and programs that play noise. One at a
/// time.
class Stage {
  public:
    explicit Stage(int programs) {
        for (int i = 0; i < programs; ++i)
            players_.push_back(std::make_unique<ChildProcess>(
                std::vector<std::string>{"paplay", "--raw", "/dev/urandom"}));
        current_ = this;
    }
    ~Stage() { current_ = nullptr; }
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    static Stage& current() { return *current_; }

    support::ListeningApplication& application() { return application_; }
    std::size_t programs() const { return players_.size(); }

    /// Of all three services together.
    Clock::duration timeOfServices() {
        Clock::duration sum{};
        for (const char* const service :
             {PrivateAudioSession::server, PrivateAudioSession::sessionManager,
              PrivateAudioSession::pulseService})
            sum += processorTime(session_.processOf(service));
        return sum;
    }

    /// Whether levels of every program have come.
    bool hearsAll() {
        return std::ranges::all_of(players_, [this](const auto& player) {
            return !application_.levelsOf(static_cast<std::uint32_t>(player->pid())).empty();
        });
    }

  private:
    const support::SystemLogRecorder log_; // a line for each connection disturbs the figures
    const support::PrivateFolder folder_;
    const support::ScopedVariable socket_{"TONVALE_SOCKET_DIR", folder_.path()};
    platform::RunLoop loop_;
    support::PrivateAudioSession session_;
    support::ListeningApplication application_;
    std::vector<std::unique_ptr<ChildProcess>> players_;

    static inline Stage* current_ = nullptr;
};

template <int programs>
std::shared_ptr<void> makeStage() {
    return std::make_shared<Stage>(programs);
}

/// A program that measures all that plays, from the moment on that it does.
class Measuring {
  public:
    static Measuring ours() {
        Stage::current().application().forgetLevels();
        return Measuring(TONVALE_PLUGIN,
                         [](const ChildProcess&) { return Stage::current().hearsAll(); });
    }
    static Measuring peer() {
        const std::string told = "measures " + std::to_string(Stage::current().programs()) + "\n";
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
    const auto time = [] { return Stage::current().timeOfServices(); };
    rest(tidyingUp);
    const double without = shareOf(time);
    const Measuring program = start();
    return shareOf(time) - without;
}

/// A player of this process and what the sink makes of it.
class Player {
  public:
    static constexpr float sample = 0.5F; // again and again, so that each tells the gain

    Player() : stream_(GraphStream::player([this](std::span<float> samples) { play(samples); })) {}

    /// Plays, and waits until it does.
    Clock::time_point start() {
        startedAt_ = 0;
        stream_->setActive(true);
        if (!support::waitUntil([this] { return startedAt_ != 0; }))
            throw std::runtime_error("the sound server does not play");
        return Clock::time_point(Clock::duration(startedAt_));
    }
    void pause() { stream_->setActive(false); }

  private:
    void play(std::span<float> samples) {
        std::ranges::fill(samples, sample);
        if (startedAt_ == 0)
            startedAt_ = Clock::now().time_since_epoch().count();
    }

    std::atomic<Clock::rep> startedAt_ = 0;
    const std::unique_ptr<GraphStream> stream_;
};

/// Tells when the sink plays samples of an awaited size.
class SinkListener {
  public:
    void await(float sample) {
        heardAt_ = 0;
        awaited_ = sample;
    }
    std::optional<Clock::time_point> heardAt() const {
        const Clock::rep time = heardAt_;
        return time != 0 ? std::optional(Clock::time_point(Clock::duration(time))) : std::nullopt;
    }

  private:
    void hear(std::span<const float> samples) {
        constexpr float tolerance = 0.01F;
        if (samples.empty() || heardAt_ != 0 ||
            std::fabs(samples.back() - awaited_) > tolerance * awaited_)
            return;
        heardAt_ = Clock::now().time_since_epoch().count();
    }

    std::atomic<float> awaited_ = 1.0F;
    std::atomic<Clock::rep> heardAt_ = 0;
    const std::unique_ptr<GraphStream> stream_ =
        GraphStream::listener([this](std::span<float> samples) { hear(samples); });
};

std::uint32_t ownPid() {
    return static_cast<std::uint32_t>(::getpid());
}

/// The plug-in, when it has found this process.
class Plugin {
  public:
    Plugin() : process_({TONVALE_PLUGIN}) {
        await(
            [] {
                return std::ranges::any_of(
                    Stage::current().application().programs(),
                    [](const auto& program) { return program.pid == ownPid(); });
            },
            "the plug-in does not find the player", process_);
    }

    pid_t pid() const noexcept { return process_.pid(); }

  private:
    ChildProcess process_;
};

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values.at(values.size() / 2);
}

/// For moments that have nothing to do with those of the graph and of the plug-in.
void restAtRandom(std::chrono::milliseconds least) {
    static std::minstd_rand random;
    rest(least + std::chrono::milliseconds(random() % 100));
}

double commandLatency() {
    constexpr int commands = 21;
    Player player;
    SinkListener listener;
    player.start();
    const Plugin plugin;
    std::vector<double> latencies;
    for (int i = 0; i < commands; ++i) {
        restAtRandom(100ms);
        const int percent = i % 2 == 0 ? 50 : 100;
        const float gain = percent == 100 ? 1.0F : 0.125F;
        listener.await(Player::sample * gain);
        const auto sent = Clock::now();
        Stage::current().application().setVolume(ownPid(), percent);
        if (!support::waitUntil([&] { return listener.heardAt().has_value(); }))
            throw std::runtime_error("the volume does not change");
        latencies.push_back(milliseconds(*listener.heardAt() - sent));
    }
    return median(std::move(latencies));
}

/// Milliseconds from the first cycle of sound to the first level.
double untilLevel(Player& player) {
    auto& application = Stage::current().application();
    application.forgetLevels();
    const auto start = player.start();
    if (!support::waitUntil([&] { return !application.levelsOf(ownPid()).empty(); }))
        throw std::runtime_error("no level comes");
    return milliseconds(application.levelsOf(ownPid()).front().arrived - start);
}

constexpr int starts = 11;
constexpr auto betweenStarts = 300ms; // so that all of the last one is over

double levelLatencyAfterPause() {
    Player player;
    player.start();
    const Plugin plugin;
    std::vector<double> latencies;
    for (int i = 0; i < starts; ++i) {
        player.pause();
        restAtRandom(betweenStarts);
        latencies.push_back(untilLevel(player));
    }
    return median(std::move(latencies));
}

double levelLatencyOfNewStream() {
    std::optional<Player> first(std::in_place);
    const Plugin plugin;
    first.reset();
    std::vector<double> latencies;
    for (int i = 0; i < starts; ++i) {
        restAtRandom(betweenStarts);
        Player player;
        latencies.push_back(untilLevel(player));
    }
    return median(std::move(latencies));
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
    const Plugin plugin;
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
                             .surroundings = &makeStage<programs>}) &&
           bench::addFigure(
               {.name = name + "/daemons",
                .metric = "what that adds to pipewire, wireplumber and pipewire-pulse together",
                .unit = "% core",
                .ours = [] { return shareOfServices(&Measuring::ours); },
                .peerName = bareMeter,
                .peer = [] { return shareOfServices(&Measuring::peer); },
                .rounds = slowRounds,
                .surroundings = &makeStage<programs>});
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
         .surroundings = &makeStage<0>}),
    bench::addFigure(
        {.name = "plugin/latency/command",
         .metric = "from the application's call to the first cycle of the sink's monitor that has "
                   "the new volume, delivered to a listener; the graph's cycle (1024/48000 s) "
                   "included",
         .unit = "ms",
         .ours = &commandLatency,
         .peerName = {},
         .peer = {},
         .surroundings = &makeStage<0>}),
    bench::addFigure(
        {.name = "plugin/latency/level",
         .metric = "from the first cycle that a program's new stream plays to its first level at "
                   "the application",
         .unit = "ms",
         .ours = &levelLatencyOfNewStream,
         .peerName = {},
         .peer = {},
         .surroundings = &makeStage<0>}),
    bench::addFigure({.name = "plugin/latency/level/resumed",
                      .metric = "the same after a pause",
                      .unit = "ms",
                      .ours = &levelLatencyAfterPause,
                      .peerName = {},
                      .peer = {},
                      .surroundings = &makeStage<0>}),
};

} // namespace
