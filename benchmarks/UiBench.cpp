#include "Harness.h"
#include "PluginStage.h"
#include "WindowProbe.h"

#include "support/ChildProcess.h"
#include "support/PrivateAudioSession.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/VirtualDisplay.h"
#include "support/WaitUntil.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <numbers>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

// What it costs to show how loud many programs are: everything that takes part, beside another
// mixer with its meters on.
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using support::ChildProcess;
using support::PrivateAudioSession;
using Clock = platform::MonotonicClock;
using bench::processorTime;

constexpr const char* peer = "pavucontrol";
constexpr auto settling = 4s;
constexpr auto measured = 10s;

/// Ten minutes of a tone that is louder and quieter all the time.
void writeTone(const fs::path& file) {
    constexpr int rate = 8000;
    constexpr int seconds = 600;
    std::vector<std::int16_t> samples(std::size_t{rate} * seconds);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double time = static_cast<double>(i) / rate;
        const double loudness = 0.5 + 0.45 * std::sin(2 * std::numbers::pi * 0.9 * time);
        samples[i] = static_cast<std::int16_t>(30000 * loudness *
                                               std::sin(2 * std::numbers::pi * 330 * time));
    }
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(samples.data()),
               static_cast<std::streamsize>(samples.size() * sizeof samples[0]));
}

/// A display high enough for every program's controls, a sound server, and programs that play.
class Desktop {
  public:
    explicit Desktop(int programs) {
        writeTone(tone());
        for (int i = 0; i < programs; ++i)
            players_.push_back(std::make_unique<ChildProcess>(
                std::vector<std::string>{player(i), "--playback", "--raw", "--rate=8000",
                                         "--channels=1", "--format=s16le", tone()}));
        const auto playing = [] {
            return std::ranges::count(
                support::runCommand({"pactl", "list", "short", "sink-inputs"}).output, '\n');
        };
        if (!support::waitUntil([&] { return playing() == programs; }))
            throw std::runtime_error("the programs do not play");
        current_ = this;
    }
    ~Desktop() { current_ = nullptr; }
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    static Desktop& current() { return *current_; }

    bench::WindowProbe& probe() { return probe_; }
    std::size_t programs() const { return players_.size(); }
    const fs::path& folder() const { return folder_.path(); }

    /// Of the services of sound and the display together.
    Clock::duration timeOfServices() {
        Clock::duration sum = processorTime(display_.pid());
        for (const char* const service :
             {PrivateAudioSession::server, PrivateAudioSession::sessionManager,
              PrivateAudioSession::pulseService})
            sum += processorTime(audio_.processOf(service));
        return sum;
    }

  private:
    /// A program of its own name, so that each is one of its own in the window.
    std::string player(int number) const {
        const fs::path copy = folder_.path() / ("Player " + std::to_string(number));
        fs::copy_file("/usr/bin/pacat", copy);
        return copy;
    }
    std::string tone() const { return folder_.path() / "tone.raw"; }

    const support::PrivateFolder folder_;
    const support::ScopedVariable variables_[7] = {
        {"WAYLAND_DISPLAY", {}},  {"PULSE_SERVER", {}}, {"PULSE_SINK", {}},
        {"PIPEWIRE_REMOTE", {}},  {"GTK_THEME", {}},    {"QT_QPA_PLATFORMTHEME", {}},
        {"QT_STYLE_OVERRIDE", {}}};
    const support::VirtualDisplay display_{"1000x7000"};
    support::PrivateAudioSession audio_;
    std::vector<std::unique_ptr<ChildProcess>> players_;
    bench::WindowProbe probe_;

    static inline Desktop* current_ = nullptr;
};

template <int programs>
std::shared_ptr<void> makeDesktop() {
    return std::make_shared<Desktop>(programs);
}

/// A program with a window that is wide and high enough for all that it shows.
class Shown {
  public:
    Shown(const std::vector<std::string>& arguments, const ChildProcess::Options& options)
        : process_((Desktop::current().probe().reset(), arguments), options) {
        const auto isPainted = [](const bench::Picture& picture) { return !picture.isOneColour(); };
        if (!Desktop::current().probe().waitFor(isPainted, support::patience))
            throw std::runtime_error("the window of " + arguments[0] +
                                     " does not come: " + process_.output());
        constexpr std::uint32_t width = 800;
        constexpr std::uint32_t heightOfOne = 110;
        Desktop::current().probe().resize(
            width, static_cast<std::uint32_t>(Desktop::current().programs() + 1) * heightOfOne);
    }

    ChildProcess& process() { return process_; }

  private:
    ChildProcess process_;
};

ChildProcess::Options homeIn(const std::string& name) {
    const fs::path home = Desktop::current().folder() / name;
    ChildProcess::Options options{.environment = {{"HOME", home}}};
    for (const auto& [variable, folder] : {std::pair{"XDG_CONFIG_HOME", "config"},
                                           {"XDG_DATA_HOME", "data"},
                                           {"XDG_STATE_HOME", "state"},
                                           {"XDG_CACHE_HOME", "cache"},
                                           {"TONVALE_SOCKET_DIR", "sockets"},
                                           {"TONVALE_LOCAL_LIBRARY", "library"}}) {
        fs::create_directories(home / folder);
        fs::permissions(home / folder, fs::perms::owner_all);
        options.environment.emplace_back(variable, home / folder);
    }
    return options;
}

/// How many percent of a processor `time` grows by.
double shareOf(const std::function<Clock::duration()>& time) {
    constexpr double percent = 100;
    const auto begin = Clock::now();
    const auto before = time();
    std::this_thread::sleep_for(measured);
    const auto spent = time() - before;
    return percent * bench::milliseconds(spent) / bench::milliseconds(Clock::now() - begin);
}

/// What the services spend while nobody looks, after what was there before has been tidied up.
double shareOfServicesAlone() {
    constexpr auto tidyingUp = 2s;
    std::this_thread::sleep_for(tidyingUp);
    return shareOf([] { return Desktop::current().timeOfServices(); });
}

double shareWith(const std::vector<pid_t>& programs) {
    return shareOf([&programs] {
        Clock::duration sum = Desktop::current().timeOfServices();
        for (const pid_t program : programs)
            sum += processorTime(program);
        return sum;
    });
}

bool logTellsOf(std::size_t programs) {
    std::ifstream log(Desktop::current().folder() / "ours/state/Tonvale/Tonvale.log");
    std::size_t count = 0;
    for (std::string line; std::getline(log, line);)
        count += line.find("' gained activity") != std::string::npos ? 1 : 0;
    return count >= programs;
}

double ours(bool isMinimised) {
    const double alone = shareOfServicesAlone();
    const ChildProcess::Options home = homeIn("ours");
    fs::remove(Desktop::current().folder() / "ours/state/Tonvale/Tonvale.log");
    const ChildProcess plugin({TONVALE_PLUGIN}, home);
    Shown application({TONVALE_PROGRAM}, home);
    if (!support::waitUntil([] { return logTellsOf(Desktop::current().programs()); }))
        throw std::runtime_error("not every program's level comes: " +
                                 application.process().output());
    if (isMinimised)
        Desktop::current().probe().iconify();
    std::this_thread::sleep_for(settling);
    return shareWith({plugin.pid(), application.process().pid()}) - alone;
}

double pavucontrol() {
    const double alone = shareOfServicesAlone();
    Shown application({peer, "--tab=1"}, homeIn("peer"));
    std::this_thread::sleep_for(settling);
    const auto meters = std::ranges::count(
        support::runCommand({"pactl", "list", "short", "source-outputs"}).output, '\n');
    if (meters < static_cast<std::ptrdiff_t>(Desktop::current().programs()))
        throw std::runtime_error("the peer's meters are not on");
    return shareWith({application.process().pid()}) - alone;
}

constexpr int rounds = 3;

template <int programs>
bool add(const std::string& name, bool isMinimised) {
    return bench::addFigure({.name = name,
                             .metric = std::to_string(programs) +
                                       " moving levels: application, plug-in, and what they add "
                                       "to sound and display",
                             .unit = "% core",
                             .ours = [isMinimised] { return ours(isMinimised); },
                             .peerName = isMinimised ? "pavucontrol on the screen" : peer,
                             .peer = &pavucontrol,
                             .rounds = rounds,
                             .surroundings = &makeDesktop<programs>});
}

[[maybe_unused]] const bool added[] = {
    add<20>("ui/meters/20", false),
    add<60>("ui/meters/60", false),
    add<20>("ui/hidden", true),
};

} // namespace
