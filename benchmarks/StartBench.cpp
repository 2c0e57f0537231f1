#include "Harness.h"
#include "WindowProbe.h"

#include "comm/MVCommSocketPath.h"
#include "platform/loop/UnixSocket.h"
#include "support/ChildProcess.h"
#include "support/NamedCopy.h"
#include "support/PrivateAudioSession.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/ScriptedPlugin.h"
#include "support/VirtualDisplay.h"
#include "support/WaitUntil.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <vector>

// The application as a whole, from its start on, beside other windows that set volumes.
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using bench::Picture;
using support::ChildProcess;
using Clock = bench::WindowProbe::Clock;

constexpr int streams = 5;
constexpr const char* gtkPeer = "pavucontrol";
constexpr const char* qtPeer = "pavucontrol-qt";

[[noreturn]] void fail(const std::string& what, const ChildProcess& program) {
    throw std::runtime_error(what + "; the program said: " + program.output());
}

/// The home of one program: no other reads its settings, and what it caches lasts for a figure.
class Home {
  public:
    Home() {
        environment_.emplace_back("HOME", folder_.path());
        for (const auto& [variable, name] : {std::pair{"XDG_CONFIG_HOME", "config"},
                                             {"XDG_DATA_HOME", "data"},
                                             {"XDG_STATE_HOME", "state"},
                                             {"XDG_CACHE_HOME", "cache"},
                                             {"TONVALE_SOCKET_DIR", "sockets"},
                                             {"TONVALE_LOCAL_LIBRARY", "library"}}) {
            const fs::path path = folder_.path() / name;
            fs::create_directory(path);
            fs::permissions(path, fs::perms::owner_all);
            environment_.emplace_back(variable, path);
        }
    }

    ChildProcess::Options options() const { return {.environment = environment_}; }
    std::string log() const { return folder_.path() / "state/Tonvale/Tonvale.log"; }
    std::string socket() const { return folder_.path() / "sockets" / kMVCommSocketName; }

  private:
    const support::PrivateFolder folder_;
    std::vector<std::pair<std::string, std::string>> environment_;
};

/// A display without a window manager, a session bus and an audio server with five programs that
/// play silence. One at a time.
class Desktop {
  public:
    Desktop() {
        for (int i = 0; i < streams; ++i) {
            const support::NamedCopy& program =
                *copies_.emplace_back(std::make_unique<support::NamedCopy>(
                    "/usr/bin/pacat", "player-" + std::to_string(i)));
            players_.push_back(std::make_unique<ChildProcess>(
                std::vector<std::string>{program.path(), "--playback", "--raw", "/dev/zero"}));
        }
        if (!support::waitUntil([] { return playing() == streams; }))
            throw std::runtime_error("the programs do not play");
        current_ = this;
    }
    ~Desktop() { current_ = nullptr; }
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    static Desktop& current() { return *current_; }

    bench::WindowProbe& probe() { return probe_; }
    Home& homeOf(const std::string& program) { return homes_[program]; }

  private:
    static std::ptrdiff_t playing() {
        const auto answer = support::runCommand({"pactl", "list", "short", "sink-inputs"});
        return std::ranges::count(answer.output, '\n');
    }

    /// These would have programs use another session or look different.
    const support::ScopedVariable unset_[8] = {
        {"WAYLAND_DISPLAY", {}},      {"PULSE_SERVER", {}},     {"PULSE_SINK", {}},
        {"PIPEWIRE_REMOTE", {}},      {"GTK_THEME", {}},        {"GTK_MODULES", {}},
        {"QT_QPA_PLATFORMTHEME", {}}, {"QT_STYLE_OVERRIDE", {}}};
    const support::VirtualDisplay display_;
    const support::PrivateAudioSession audio_;
    std::vector<std::unique_ptr<support::NamedCopy>> copies_; // each name is a program
    std::vector<std::unique_ptr<ChildProcess>> players_;
    bench::WindowProbe probe_;
    std::map<std::string, Home> homes_;

    static inline Desktop* current_ = nullptr;
};

std::shared_ptr<void> makeDesktop() {
    return std::make_shared<Desktop>();
}

/// A program whose window is awaited, started by the constructor.
class Starting {
  public:
    explicit Starting(const std::string& program)
        : start_((Desktop::current().probe().reset(), Clock::now()))
        , process_({program}, Desktop::current().homeOf(program).options()) {}

    ChildProcess& process() { return process_; }

    /// Milliseconds from the start until the window shows it.
    double untilShown(const std::function<bool(const Picture&)>& shows) {
        const auto shown = Desktop::current().probe().waitFor(shows, support::patience);
        if (!shown)
            fail("the window does not come", process_);
        return std::chrono::duration<double, std::milli>(*shown - start_).count();
    }

    /// Painted: the server holds a picture of the mapped window that is not of one colour. All
    /// these programs leave the window's background alone and draw their first frame as a whole.
    double untilPainted() {
        return untilShown([](const Picture& picture) { return !picture.isOneColour(); });
    }

    void rest(Clock::duration sinceStart) const {
        std::this_thread::sleep_until(start_ + sinceStart);
    }

  private:
    const Clock::time_point start_;
    ChildProcess process_;
};

double timeToWindow(const std::string& program) {
    return Starting(program).untilPainted();
}

double windowOfPeers() {
    return std::min(timeToWindow(gtkPeer), timeToWindow(qtPeer));
}

/// Plug-ins with a program each, whose names begin with a bar.
class Plugins {
  public:
    /// Connects as soon as somebody listens.
    Plugins(std::uint32_t count, Starting& application)
        : socket_(Desktop::current().homeOf(TONVALE_PROGRAM).socket()) {
        const auto end = Clock::now() + support::patience;
        for (std::uint32_t i = 0; i < count; ++i) {
            platform::FileDescriptor& connection = connections_.emplace_back();
            while (!(connection = platform::connectUnixSocket(socket_))) {
                if (Clock::now() > end || !application.process().isRunning())
                    fail("no plug-in can connect", application.process());
                std::this_thread::sleep_for(200us);
            }
            checkIn(connection, i);
        }
    }

  private:
    static void checkIn(const platform::FileDescriptor& connection, std::uint32_t number) {
        // No process has such a number.
        constexpr std::uint32_t firstPid = 1U << 30U;
        const std::string id = std::to_string(number);
        const std::string bytes = support::ScriptedPlugin::checkinBytes(
            firstPid + number, "████ " + id, "/usr/bin/player" + id);
        if (::send(connection.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) !=
            static_cast<ssize_t>(bytes.size()))
            throw std::runtime_error("a plug-in cannot check in");
    }

    const std::string socket_;
    std::vector<platform::FileDescriptor> connections_;
};

/// The colour of a silent program's name.
bool isName(std::uint32_t pixel) {
    return pixel == 0x676767U;
}

/// Whether such pixels follow each other for longer than in any letter.
bool crossesBar(std::span<const std::uint32_t> row) {
    constexpr std::ptrdiff_t length = 24;
    return !std::ranges::search_n(row, length, true, {}, isName).empty();
}

/// How many of the names' bars are there, one below the other: of one colour and as high as a line
/// of text. Nothing else in the window is.
int bars(const Picture& picture) {
    constexpr int leastHeight = 8;
    int count = 0;
    int height = 0;
    for (std::size_t y = 0; y < picture.height(); ++y) {
        height = crossesBar(picture.row(y)) ? height + 1 : 0;
        count += height == leastHeight ? 1 : 0;
    }
    return count;
}

double timeToRows() {
    Starting application(TONVALE_PROGRAM);
    const Plugins plugins(streams, application);
    return application.untilShown([](const Picture& picture) { return bars(picture) == streams; });
}

/// The number after `key` in a file of lines "key: number ..." below /proc.
std::uint64_t readNumber(const fs::path& file, const std::string& key) {
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        if (!line.starts_with(key + ":"))
            continue;
        const auto digit = line.find_first_of("0123456789");
        return digit == std::string::npos ? 0 : std::stoull(line.substr(digit));
    }
    throw std::runtime_error(file.string() + " does not tell " + key);
}

/// MiB. What is shared with other processes counts in part: the figure falls by a MiB or two for
/// what this program shares with ours, and by more while other programs with the same toolkit run.
double proportionalMemory(const ChildProcess& program) {
    constexpr double kibibytes = 1024;
    const fs::path file = fs::path("/proc") / std::to_string(program.pid()) / "smaps_rollup";
    return static_cast<double>(readNumber(file, "Pss")) / kibibytes;
}

constexpr auto memoryIsTaken = 10s; // after the start

double memoryOf(const std::string& program) {
    Starting starting(program);
    starting.untilPainted();
    starting.rest(memoryIsTaken);
    return proportionalMemory(starting.process());
}

double memoryOfPeers() {
    return std::min(memoryOf(gtkPeer), memoryOf(qtPeer));
}

struct Memory {
    double application;
    double plugin;
};

/// How many programs are connected according to the application's log.
int connectedPrograms() {
    std::ifstream log(Desktop::current().homeOf(TONVALE_PROGRAM).log());
    int count = 0;
    for (std::string line; std::getline(log, line);)
        count += line.find("' connected") != std::string::npos ? 1 : 0;
    return count;
}

/// The two work together: the application shows what the plug-in knows of the playing programs.
Memory ourMemory() {
    const ChildProcess plugin({TONVALE_PLUGIN},
                              Desktop::current().homeOf(TONVALE_PROGRAM).options());
    Starting application(TONVALE_PROGRAM);
    application.untilPainted();
    application.rest(memoryIsTaken);
    if (connectedPrograms() != streams + 1) // and the notification sounds
        fail("the plug-in has not told of the playing programs", application.process());
    return {proportionalMemory(application.process()), proportionalMemory(plugin)};
}

/// Context switches of a process so far, by thread.
std::map<std::string, std::uint64_t> switchesOf(const ChildProcess& program) {
    std::map<std::string, std::uint64_t> counts;
    for (const auto& thread :
         fs::directory_iterator("/proc/" + std::to_string(program.pid()) + "/task")) {
        const fs::path file = thread.path() / "status";
        counts[thread.path().filename()] = readNumber(file, "voluntary_ctxt_switches") +
                                           readNumber(file, "nonvoluntary_ctxt_switches");
    }
    return counts;
}

double idleWakeups() {
    constexpr std::uint32_t programs = 20;
    constexpr auto settling = 3s;
    constexpr auto duration = 10s;
    Starting application(TONVALE_PROGRAM);
    const Plugins plugins(programs, application);
    application.untilPainted();
    std::this_thread::sleep_for(settling);
    auto before = switchesOf(application.process());
    std::this_thread::sleep_for(duration);
    std::uint64_t switches = 0;
    for (const auto& [thread, count] : switchesOf(application.process()))
        switches += count - before[thread];
    return static_cast<double>(switches) / std::chrono::duration<double>(duration).count();
}

constexpr int slowRounds = 5; // of figures that wait for many seconds

[[maybe_unused]] const bool added[] = {
    bench::addFigure({.name = "start/window",
                      .metric = "from the start to the first picture in the window",
                      .unit = "ms",
                      .ours = [] { return timeToWindow(TONVALE_PROGRAM); },
                      .peerName = "better of pavucontrol, -qt",
                      .peer = &windowOfPeers,
                      .surroundings = &makeDesktop}),
    bench::addFigure({.name = "start/rows",
                      .metric = "from the start to the picture with five programs",
                      .unit = "ms",
                      .ours = &timeToRows,
                      .peerName = {},
                      .peer = {},
                      .surroundings = &makeDesktop}),
    bench::addFigure({.name = "start/memory",
                      .metric = "proportional set size ten seconds after the start",
                      .unit = "MiB",
                      .ours = [] { return ourMemory().application; },
                      .peerName = "leaner of pavucontrol, -qt",
                      .peer = &memoryOfPeers,
                      .rounds = slowRounds,
                      .surroundings = &makeDesktop}),
    bench::addFigure({.name = "start/memory/plugin",
                      .metric = "the plug-in beside it",
                      .unit = "MiB",
                      .ours = [] { return ourMemory().plugin; },
                      .peerName = {},
                      .peer = {},
                      .rounds = slowRounds,
                      .surroundings = &makeDesktop}),
    bench::addFigure({.name = "idle/wakeups",
                      .metric = "context switches of all threads, 20 silent programs connected",
                      .unit = "/s",
                      .ours = &idleWakeups,
                      .peerName = {},
                      .peer = {},
                      .rounds = slowRounds,
                      .surroundings = &makeDesktop}),
};

} // namespace
