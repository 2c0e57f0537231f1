#include "Harness.h"

#include "framework/redaction/Redactor.h"
#include "framework/support/QNSupportLog.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "support/PrivateFolder.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

/// Ten files such as a log of this program is, with this person's names in them.
class LogFiles {
  public:
    LogFiles() {
        constexpr std::size_t size = std::size_t{5} << 20U;
        std::mt19937 random; // without a seed: the same files each time
        for (int i = 0; i < 10; ++i) {
            std::string text;
            while (text.size() < size)
                text += line(random);
            std::ofstream(folder_.path() / ("Tonvale" + std::to_string(i) + ".log"),
                          std::ios::binary)
                << text;
        }
        current = this;
    }
    ~LogFiles() { current = nullptr; }
    LogFiles(const LogFiles&) = delete;
    LogFiles& operator=(const LogFiles&) = delete;

    std::string folder() const { return folder_.path(); }

    static inline const LogFiles* current = nullptr;

  private:
    static std::string line(std::mt19937& random) {
        constexpr const char* programs[]{"Firefox", "Music Player", "mpv", "Chromium"};
        const auto number = [&](unsigned below) { return std::to_string(random() % below); };
        const std::string program = programs[random() % std::size(programs)];
        const std::string begin = ":" + number(60) + ":" + number(60) + "." + number(1000) + ": ";
        switch (random() % 4) {
        case 0:
            return begin + "[I] Client " + number(99999) + " has connected: " + program + "\n";
        case 1:
            return begin + "[U] Volume of " + program + ": " + number(100) + " percent\n";
        case 2:
            return begin + "[I] Saved /home/someone/.config/com.quarnel.Tonvale.plist\n";
        default:
            return begin + "[W] alsa_output.pci-0000_00_1f.3.analog-stereo: level " + number(100) +
                   " of " + program + " (pid " + number(99999) + ")\n";
        }
    }

    const support::PrivateFolder folder_;
};

platform::PersonalFacts someone() {
    return {.home = "/home/someone",
            .userName = "someone",
            .realName = "Some One",
            .hostName = "wolke",
            .machineIds = {"0123456789abcdef0123456789abcdef"},
            .serialNumbers = {"PF3X9123"}};
}

double archiveByStore() {
    const Redactor redactor(someone());
    const auto begin = Clock::now();
    QNSupportLogStore store(QStringLiteral("Bench"), QDateTime::currentDateTime(), false, redactor);
    store.addPath(QString::fromStdString(LogFiles::current->folder()));
    if (!store.close() || redactor.count(RedactionKind::homeFolder) == 0)
        throw std::runtime_error("the archive is not whole");
    return secondsSince(begin);
}

double archiveByTar() {
    const std::string folder = LogFiles::current->folder();
    const std::string command = "tar -C '" + folder + "' -cf - . | bzip2 >'" + folder + ".tar.bz2'";
    const auto begin = Clock::now();
    const bool done = std::system(command.c_str()) == 0;
    const double seconds = secondsSince(begin);
    std::filesystem::remove(folder + ".tar.bz2");
    if (!done)
        throw std::runtime_error("tar has failed");
    return seconds;
}

struct Collected {
    double seconds;
    double longestGap; ///< of the main thread, in seconds
};

Collected collect() {
    platform::RunLoop loop;
    const platform::MainQueueService mainQueue(loop);
    SupportSources sources = SupportSources::ofTheSystem();
    sources.sampleProcess = [](const auto&) { return std::nullopt; };
    const auto begin = Clock::now();
    double longestGap = 0;
    bool done = false;
    QNSupportLog report(sources);
    report.generatePostDictionary([](const auto&, auto) {}, [&](const auto&) { done = true; });
    longestGap = secondsSince(begin);
    while (!done) {
        constexpr std::chrono::milliseconds tick{1};
        const auto turn = Clock::now();
        loop.turnWithin(tick);
        longestGap = std::max(longestGap, secondsSince(turn));
    }
    return {secondsSince(begin), longestGap};
}

constexpr double millisecondsInSecond = 1000;

[[maybe_unused]] const bool added =
    bench::addFigure({.name = "support/archive/50MiB",
                      .metric = "ten log files of 5 MiB, redacted, into a report's archive",
                      .unit = "s",
                      .ours = &archiveByStore,
                      .peerName = "tar and bzip2, nothing redacted",
                      .peer = &archiveByTar,
                      .rounds = 3,
                      .surroundings = [] { return std::make_shared<LogFiles>(); }}) &&
    bench::addFigure({.name = "support/collect",
                      .metric = "collecting a report on this machine, without samples",
                      .unit = "s",
                      .ours = [] { return collect().seconds; },
                      .peerName = "",
                      .peer = nullptr}) &&
    bench::addFigure({.name = "support/collect/gap",
                      .metric = "the longest time without the main thread meanwhile",
                      .unit = "ms",
                      .ours = [] { return collect().longestGap * millisecondsInSecond; },
                      .peerName = "",
                      .peer = nullptr});

} // namespace
