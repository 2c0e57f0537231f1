#include "Harness.h"
#include "framework/log/qnlog.h"
#include "framework/log/qnlog_handle.h"

#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>

#include <algorithm>
#include <atomic>
#include <barrier>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::size_t queueBound = 8192; // lines that may wait
constexpr const char* program = "Music Player";

/// A file that is gone when the figure is.
class ScratchFile {
  public:
    ScratchFile()
        : path_(fs::temp_directory_path() / ("tonvale-bench-" + std::to_string(::getpid()))) {
        fs::remove(path_);
    }
    ~ScratchFile() { fs::remove(path_); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::string& path() const noexcept { return path_; }

    void expectLines(std::size_t expected) const {
        std::ifstream file(path_);
        std::size_t count = 0;
        for (std::string line; std::getline(file, line);)
            count += line.find(program) != std::string::npos ? 1U : 0U;
        if (count != expected) {
            throw std::runtime_error(std::to_string(count) + " lines of " +
                                     std::to_string(expected) + " are in the file");
        }
    }

  private:
    const std::string path_;
};

class OurLog {
  public:
    /// A waiting line of this benchmark takes about 72 bytes.
    OurLog(const std::string& path, bool /*flushesLines*/)
        : handle_(QN::log::LogFile(QN::log::LogFile::open(path), &::write),
                  {.path = path, .bound = queueBound * 72}) {}

    void log(unsigned number) {
        qnlog_msg(&handle_, qnlog_information, "Client %u has connected: %s", number, program);
    }

  private:
    qnlog_handle handle_;
};

class SpdLog {
  public:
    SpdLog(const std::string& path, bool flushesLines)
        : pool_(std::make_shared<spdlog::details::thread_pool>(queueBound, 1))
        , logger_(std::make_shared<spdlog::async_logger>(
              "bench", std::make_shared<spdlog::sinks::basic_file_sink_mt>(path), pool_,
              spdlog::async_overflow_policy::block)) {
        logger_->set_pattern("%H:%M:%S.%e [%L] %v");
        if (flushesLines)
            logger_->flush_on(spdlog::level::trace);
    }

    void log(unsigned number) { logger_->info("Client {} has connected: {}", number, program); }

  private:
    std::shared_ptr<spdlog::details::thread_pool> pool_; // joins its thread, which drains, last
    std::shared_ptr<spdlog::async_logger> logger_;
};

using Costs = std::vector<double>;

template <typename Log>
double timedCall(Log& log, unsigned number) {
    const auto begin = Clock::now();
    log.log(number);
    return std::chrono::duration<double, std::nano>(Clock::now() - begin).count();
}

double quantile(Costs costs, double part) {
    const auto place =
        costs.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(costs.size()));
    std::nth_element(costs.begin(), place, costs.end());
    return *place;
}

/// As an application logs: a line every 50 us.
template <typename Log>
double paced(double part) {
    constexpr unsigned lines = 4000;
    const ScratchFile file;
    Costs costs;
    costs.reserve(lines);
    {
        Log log(file.path(), false);
        auto due = Clock::now();
        for (unsigned i = 0; i < lines; ++i) {
            due += 50us;
            while (Clock::now() < due) {
            }
            costs.push_back(timedCall(log, i));
        }
    }
    file.expectLines(lines);
    return quantile(std::move(costs), part);
}

/// Each of the producers leaves 1000 lines at once, all at the same time, again and again.
template <typename Log>
double burst(std::size_t producers, double part) {
    constexpr unsigned lines = 1000;
    constexpr unsigned bursts = 40;
    const ScratchFile file;
    std::vector<Costs> costs(producers);
    {
        Log log(file.path(), false);
        std::barrier start(static_cast<std::ptrdiff_t>(producers));
        std::vector<std::thread> threads;
        for (Costs& own : costs) {
            own.reserve(std::size_t{lines} * bursts);
            threads.emplace_back([&] {
                for (unsigned i = 0; i < bursts; ++i) {
                    start.arrive_and_wait();
                    for (unsigned line = 0; line < lines; ++line)
                        own.push_back(timedCall(log, line));
                    std::this_thread::sleep_for(10ms); // the writer gets done meanwhile
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    }
    file.expectLines(producers * lines * bursts);
    for (std::size_t i = 1; i < producers; ++i)
        costs[0].insert(costs[0].end(), costs[i].begin(), costs[i].end());
    return quantile(std::move(costs[0]), part);
}

/// From the first line of a burst until the log is closed. Both hand every line to the kernel.
template <typename Log>
double throughput() {
    constexpr unsigned rounds = 40;
    constexpr unsigned lines = queueBound / 2;
    const ScratchFile file;
    double time = 0;
    for (unsigned round = 0; round < rounds; ++round) {
        auto log = std::make_unique<Log>(file.path(), true);
        time += bench::nanosecondsEach(lines, [&] {
            for (unsigned i = 0; i < lines; ++i)
                log->log(i);
            log.reset();
        });
    }
    file.expectLines(std::size_t{rounds} * lines);
    return time / rounds;
}

bool addQuantiles(const std::string& name, const std::string& metric,
                  const std::function<double(double)>& ours,
                  const std::function<double(double)>& peer) {
    constexpr const char* peerName = "spdlog async";
    bench::addFigure(
        {name, metric, "ns", [ours] { return ours(0.5); }, peerName, [peer] { return peer(0.5); }});
    return bench::addFigure({name + "/p99", metric, "ns", [ours] { return ours(0.99); }, peerName,
                             [peer] { return peer(0.99); }});
}

[[maybe_unused]] const bool added[] = {
    addQuantiles("log/call/paced", "cost of a call, one every 50 us", &paced<OurLog>,
                 &paced<SpdLog>),
    addQuantiles(
        "log/call/burst/1", "cost of a call in bursts of 1000",
        [](double part) { return burst<OurLog>(1, part); },
        [](double part) { return burst<SpdLog>(1, part); }),
    addQuantiles(
        "log/call/burst/2", "the same with two producers",
        [](double part) { return burst<OurLog>(2, part); },
        [](double part) { return burst<SpdLog>(2, part); }),
    bench::addFigure({"log/throughput", "a line, until all are in the file", "ns/line",
                      &throughput<OurLog>, "spdlog, flushing", &throughput<SpdLog>}),
};

} // namespace
