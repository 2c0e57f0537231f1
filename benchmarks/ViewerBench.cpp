#include "Harness.h"
#include "PluginStage.h"
#include "TerminalProgram.h"
#include "WindowProbe.h"

#include "support/ChildProcess.h"
#include "support/PrivateFolder.h"
#include "support/VirtualDisplay.h"
#include "support/WaitUntil.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

// The log's window, beside another program that shows logs.
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using bench::milliseconds;
using bench::Picture;
using support::ChildProcess;
using Clock = bench::WindowProbe::Clock;

constexpr const char* peer = "/usr/bin/lnav";
constexpr std::size_t logSize = std::size_t{100} << 20U;
constexpr double mebibyte = 1 << 20U;
constexpr const char* lastWord = "thelastlineofthefile";

/// Writes lines as the log writes them, with some messages each second.
class LogWriter {
  public:
    explicit LogWriter(const fs::path& file) : file_(file, std::ios::binary | std::ios::app) {}

    void write(char level, const std::string& text) {
        std::array<char, 64> head{};
        const long hour = second_ / 3600;
        if (std::exchange(hour_, hour) != hour) {
            const int size =
                std::snprintf(head.data(), head.size(), "2014-03-%02ld %02ld:00:00 +100\n",
                              7 + hour / 24, hour % 24);
            put(head.data(), size);
        }
        const int size =
            std::snprintf(head.data(), head.size(), ":%02ld:%02ld.%-3d: [%c] ", second_ / 60 % 60,
                          second_ % 60, static_cast<int>(random_() % 1000), level);
        put(head.data(), size);
        file_ << text << '\n';
        written_ += text.size() + 1;
        second_ += random_() % 5 == 0 ? 1 : 0;
    }

    void writeAny() { write("IIIIIIUUW"[random_() % 9], texts_[random_() % texts_.size()]); }

    void flush() { file_.flush(); }
    [[nodiscard]] std::size_t written() const noexcept { return written_; }

  private:
    void put(const char* bytes, int size) {
        file_.write(bytes, size);
        written_ += static_cast<std::size_t>(size);
    }

    static std::vector<std::string> makeTexts() {
        constexpr std::array words{"connected", "closed", "player",  "level",  "gained", "socket",
                                   "volume",    "set",    "session", "stream", "node",   "started"};
        std::mt19937 random(5);
        std::vector<std::string> texts(1000);
        for (std::string& text : texts) {
            for (auto count = 5 + random() % 15; count > 0; --count)
                text += std::string(words[random() % words.size()]) + ' ';
        }
        return texts;
    }

    std::ofstream file_;
    std::mt19937 random_{3};
    const std::vector<std::string> texts_ = makeTexts();
    long second_ = 0;
    long hour_ = -1;
    std::size_t written_ = 0;
};

/// A display and a log of 100 MiB whose last line alone is an error.
struct Stage {
    Stage() {
        std::ofstream(log(), std::ios::binary) << "\xEF\xBB\xBF";
        LogWriter writer(log());
        while (writer.written() < logSize)
            writer.writeAny();
        writer.write('E', lastWord);
        std::ofstream(empty(), std::ios::binary) << "\xEF\xBB\xBF";
        current = this;
    }
    ~Stage() { current = nullptr; }
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    fs::path log() const { return folder.path() / "Tonvale.log"; }
    fs::path empty() const { return folder.path() / "Empty.log"; }

    const support::PrivateFolder folder;
    const support::VirtualDisplay display{"1280x800"};
    bench::WindowProbe probe;

    static inline Stage* current = nullptr;
};

std::shared_ptr<void> makeStage() {
    return std::make_shared<Stage>();
}

/// How many pixels of a row have the colour of errors.
std::size_t errorPixels(std::span<const std::uint32_t> row) {
    constexpr std::uint32_t errorColor = 0xFFC7C7;
    return static_cast<std::size_t>(std::ranges::count(row, errorColor));
}

bool showsError(const Picture& picture) {
    constexpr std::size_t enough = 300;
    for (std::size_t y = 0; y < picture.height(); ++y) {
        if (errorPixels(picture.row(y)) > enough)
            return true;
    }
    return false;
}

class Viewer {
  public:
    explicit Viewer(const fs::path& log)
        : start_((probe().reset(), Clock::now())), process_({TONVALE_LOG_VIEWER, log.string()}) {}

    static bench::WindowProbe& probe() { return Stage::current->probe; }

    Clock::time_point awaitPicture(const std::function<bool(const Picture&)>& shows) {
        const auto shown = probe().waitFor(shows, support::patience);
        if (!shown)
            throw std::runtime_error("the viewer does not show it: " + process_.output());
        return *shown;
    }

    double untilShown() { return milliseconds(awaitPicture(&showsError) - start_); }

    double untilIndexed() {
        if (!support::waitUntil(
                [&] { return process_.output().find("rows ") != std::string::npos; }))
            throw std::runtime_error("the viewer does not end: " + process_.output());
        return milliseconds(Clock::now() - start_);
    }

    /// Milliseconds of the longest event from byte `from` of the output on.
    double longestEvent(std::size_t from) const {
        std::istringstream lines(process_.outputFrom(from));
        double longest = 0;
        double time = 0;
        for (std::string word; lines >> word >> time;)
            longest = word == "longest" ? std::max(longest, time) : longest;
        return longest / 1000;
    }

    /// MiB that no other process has.
    double privateMemory() const {
        std::ifstream file("/proc/" + std::to_string(process_.pid()) + "/smaps_rollup");
        double sum = 0;
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("Private_"))
                sum += std::stod(line.substr(line.find(':') + 1));
        }
        return sum / 1024;
    }

    Clock::duration processorTime() const { return bench::processorTime(process_.pid()); }

    ChildProcess& process() { return process_; }

  private:
    const Clock::time_point start_;
    ChildProcess process_;
};

double timeToLastRows() {
    return Viewer(Stage::current->log()).untilShown();
}

double timeToIndex() {
    return Viewer(Stage::current->log()).untilIndexed();
}

/// The quicker of showing what it shows by itself and being sent to the end.
double timeOfPeer() {
    double best = 0;
    for (const bool isSent : {false, true}) {
        const support::PrivateFolder home;
        std::vector<std::string> arguments{peer};
        if (isSent)
            arguments.insert(arguments.end(), {"-c", ":goto 100%"});
        arguments.push_back(Stage::current->log());
        bench::TerminalProgram program(arguments, {{"HOME", home.path()},
                                                   {"TERM", "xterm-256color"},
                                                   {"LC_ALL", "C.UTF-8"},
                                                   {"PATH", "/usr/bin:/bin"}});
        const auto time = program.timeUntilWritten(lastWord, support::patience);
        if (!time)
            throw std::runtime_error("lnav does not show the last line");
        best = best == 0 ? milliseconds(*time) : std::min(best, milliseconds(*time));
    }
    return best;
}

double memoryOf(const fs::path& log) {
    constexpr auto settling = 1s;
    Viewer viewer(log);
    viewer.awaitPicture([](const Picture& picture) { return !picture.isOneColour(); });
    viewer.untilIndexed();
    std::this_thread::sleep_for(settling);
    return viewer.privateMemory();
}

double grownMemory() {
    return memoryOf(Stage::current->log()) - memoryOf(Stage::current->empty());
}

/// What following 1,000 lines a second for ten seconds takes.
struct Following {
    double processorShare; ///< percent of one
    double longestFrame;   ///< ms
    double longestDelay;   ///< ms, of the errors that come once a second
};

Following follow() {
    constexpr int seconds = 10;
    constexpr auto tick = 10ms;
    constexpr int linesOfTick = 10;
    constexpr int ticksOfSecond = 100;
    const fs::path log = Stage::current->folder.path() / "Growing.log";
    std::ofstream(log, std::ios::binary | std::ios::trunc) << "\xEF\xBB\xBF";
    LogWriter writer(log);
    writer.writeAny();
    writer.flush();
    Viewer viewer(log);
    viewer.awaitPicture([](const Picture& picture) { return !picture.isOneColour(); });
    viewer.untilIndexed();
    std::this_thread::sleep_for(2s);
    Following following{};
    const std::size_t printed = viewer.process().outputSize();
    const auto before = viewer.processorTime();
    const auto begin = Clock::now();
    for (int i = 0; i < seconds * ticksOfSecond; ++i) {
        const bool hasError = i % ticksOfSecond == ticksOfSecond / 2;
        for (int line = 0; line < linesOfTick - (hasError ? 1 : 0); ++line)
            writer.writeAny();
        if (hasError)
            writer.write('E', "an error");
        writer.flush();
        const auto written = Clock::now();
        if (hasError)
            following.longestDelay = std::max(
                following.longestDelay, milliseconds(viewer.awaitPicture(&showsError) - written));
        std::this_thread::sleep_until(begin + tick * (i + 1));
    }
    const double duration = milliseconds(Clock::now() - begin);
    following.processorShare = 100 * milliseconds(viewer.processorTime() - before) / duration;
    std::this_thread::sleep_for(1100ms); // for the last second's line
    following.longestFrame = viewer.longestEvent(printed);
    return following;
}

/// From the change of the width to the frame that is as wide, the worst of ten.
double timeToResize() {
    constexpr std::array<std::uint32_t, 2> widths{1000, 700};
    constexpr std::uint32_t height = 560;
    constexpr std::size_t besideRow = 40; // frame and scroll bar
    Viewer viewer(Stage::current->log());
    viewer.untilShown();
    viewer.untilIndexed();
    double worst = 0;
    for (int i = 0; i < 11; ++i) {
        const std::uint32_t width = widths[static_cast<std::size_t>(i) % widths.size()];
        std::this_thread::sleep_for(200ms);
        const auto start = Clock::now();
        Viewer::probe().resize(width, height);
        const auto shown = viewer.awaitPicture([&](const Picture& picture) {
            if (picture.height() != height || picture.row(0).size() != width)
                return false;
            for (std::size_t y = 0; y < picture.height(); ++y) {
                if (errorPixels(picture.row(y)) > width - besideRow)
                    return true;
            }
            return false;
        });
        if (i > 0) // the first one moves the window, too
            worst = std::max(worst, milliseconds(shown - start));
    }
    return worst;
}

constexpr int slowRounds = 3;

[[maybe_unused]] const bool added[] = {
    bench::addFigure({.name = "viewer/open",
                      .metric = "from the start to the picture with the last of 100 MiB",
                      .unit = "ms",
                      .ours = &timeToLastRows,
                      .peerName = "lnav",
                      .peer = &timeOfPeer,
                      .surroundings = &makeStage}),
    bench::addFigure({.name = "viewer/index",
                      .metric = "from the start until all rows of 100 MiB are known",
                      .unit = "ms",
                      .ours = &timeToIndex,
                      .peerName = "lnav, last line shown",
                      .peer = &timeOfPeer,
                      .surroundings = &makeStage}),
    bench::addFigure({.name = "viewer/memory",
                      .metric = "private memory for a log of 100 MiB",
                      .unit = "MiB",
                      .ours = &grownMemory,
                      .peerName = "the file's size",
                      .peer = [] { return static_cast<double>(logSize) / mebibyte; },
                      .rounds = slowRounds,
                      .surroundings = &makeStage}),
    bench::addFigure({.name = "viewer/follow/cpu",
                      .metric = "following 1,000 lines a second",
                      .unit = "%",
                      .ours = [] { return follow().processorShare; },
                      .peerName = {},
                      .peer = {},
                      .rounds = slowRounds,
                      .surroundings = &makeStage}),
    bench::addFigure({.name = "viewer/follow/frame",
                      .metric = "the longest event meanwhile",
                      .unit = "ms",
                      .ours = [] { return follow().longestFrame; },
                      .peerName = {},
                      .peer = {},
                      .rounds = slowRounds,
                      .surroundings = &makeStage}),
    bench::addFigure({.name = "viewer/follow/delay",
                      .metric = "from a line in the file to the screen, the worst of ten",
                      .unit = "ms",
                      .ours = [] { return follow().longestDelay; },
                      .peerName = {},
                      .peer = {},
                      .rounds = slowRounds,
                      .surroundings = &makeStage}),
    bench::addFigure({.name = "viewer/resize",
                      .metric = "from a change of the width to the frame, the worst of ten",
                      .unit = "ms",
                      .ours = &timeToResize,
                      .peerName = {},
                      .peer = {},
                      .rounds = slowRounds,
                      .surroundings = &makeStage}),
};

} // namespace
