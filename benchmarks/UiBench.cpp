#include "Desktop.h"
#include "Harness.h"
#include "PluginStage.h"
#include "WindowProbe.h"

#include "support/ChildProcess.h"
#include "support/PrivateFolder.h"
#include "support/WaitUntil.h"
#include "ui/items/ItemLayout.h"
#include "ui/items/MVCollectionView.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <numbers>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

// What it costs to show how loud many programs are: everything that takes part, beside another
// mixer with its meters on.
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using bench::Desktop;
using bench::Picture;
using support::ChildProcess;
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

std::vector<std::vector<std::string>> playersIn(const fs::path& folder, std::size_t count) {
    const fs::path tone = folder / "tone.raw";
    writeTone(tone);
    return std::vector(count, std::vector<std::string>{"/usr/bin/pacat", "--playback", "--raw",
                                                       "--rate=8000", "--channels=1",
                                                       "--format=s16le", tone});
}

/// A display high enough for every program's controls, and programs that play.
struct Dependencies {
    explicit Dependencies(std::size_t programs)
        : desktop("1000x7000", playersIn(folder.path(), programs)) {}

    support::PrivateFolder folder;
    Desktop desktop;
};

template <int programs>
std::shared_ptr<void> makeDesktop() {
    return std::make_shared<Dependencies>(programs);
}

constexpr std::uint32_t width = 920;

/// A program with a window that is wide and high enough for all that it shows.
class Shown {
  public:
    explicit Shown(const std::vector<std::string>& arguments)
        : process_((Desktop::current().probe().reset(), arguments),
                   Desktop::current().homeOf(arguments[0]).options()) {
        await([](const Picture& picture) { return !picture.isOneColour(); },
              "the window does not come");
        constexpr std::uint32_t heightOfOne = 110; // of the peer; ours is smaller and takes less
        Desktop::current().probe().resize(
            width, static_cast<std::uint32_t>(Desktop::current().programs() + 1) * heightOfOne);
    }

    void await(const std::function<bool(const Picture&)>& shows, const std::string& what) {
        if (!Desktop::current().probe().waitFor(shows, support::patience))
            throw std::runtime_error(what + "; the program said: " + process_.output());
    }

    /// What would be drawn for nobody is not what is to be measured.
    void awaitMovement() {
        std::optional<Picture> first;
        await(
            [&first](const Picture& picture) {
                if (!first)
                    first = picture;
                return picture != *first;
            },
            "no level moves in the window");
    }

    pid_t pid() const { return process_.pid(); }

  private:
    ChildProcess process_;
};

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
    std::ifstream log(Desktop::current().homeOf(TONVALE_PROGRAM).log());
    std::size_t count = 0;
    for (std::string line; std::getline(log, line);)
        count += line.find("' gained activity") != std::string::npos ? 1 : 0;
    return count >= programs;
}

/// Whether the window is high enough for all programs and the sound effects.
bool showsAll(const Picture& picture) {
    const auto columns = static_cast<std::size_t>(MVCollectionView::columnsFor(width));
    const std::size_t rows = (Desktop::current().programs() + columns) / columns;
    return picture.height() >= rows * static_cast<std::size_t>(ItemLayout::height);
}

double ours(bool isMinimised) {
    const double alone = shareOfServicesAlone();
    bench::Home& home = Desktop::current().homeOf(TONVALE_PROGRAM);
    fs::remove(home.log());
    const ChildProcess plugin({TONVALE_PLUGIN}, home.options());
    Shown application({TONVALE_PROGRAM});
    application.await(&showsAll, "not every program can be seen");
    if (!support::waitUntil([] { return logTellsOf(Desktop::current().programs()); }))
        throw std::runtime_error("not every program's level comes");
    application.awaitMovement();
    if (isMinimised)
        Desktop::current().probe().iconify();
    std::this_thread::sleep_for(settling);
    return shareWith({plugin.pid(), application.pid()}) - alone;
}

double pavucontrol() {
    const double alone = shareOfServicesAlone();
    Shown application({peer, "--tab=1"});
    application.awaitMovement();
    std::this_thread::sleep_for(settling);
    const auto meters = std::ranges::count(
        support::runCommand({"pactl", "list", "short", "source-outputs"}).output, '\n');
    if (meters < static_cast<std::ptrdiff_t>(Desktop::current().programs()))
        throw std::runtime_error("the peer's meters are not on");
    return shareWith({application.pid()}) - alone;
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
