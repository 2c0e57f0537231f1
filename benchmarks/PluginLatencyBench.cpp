#include "Harness.h"
#include "PluginStage.h"

#include "support/WaitUntil.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <optional>
#include <random>
#include <span>
#include <stdexcept>
#include <vector>

// How long a command and a level are on their way through the plug-in.
namespace {

using namespace std::chrono_literals;
using support::GraphStream;
using Clock = platform::MonotonicClock;
using namespace bench;

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
    const FoundPlugin plugin;
    std::vector<double> latencies;
    for (int i = 0; i < commands; ++i) {
        restAtRandom(100ms);
        // One step of a change that is led in steps, so that the first changed samples are the
        // last.
        const int percent = i % 2 == 0 ? 95 : 100;
        const float gain = percent == 100 ? 1.0F : 0.95F * 0.95F * 0.95F;
        listener.await(Player::sample * gain);
        const auto sent = Clock::now();
        PluginStage::current().application().setVolume(ownPid(), percent);
        if (!support::waitUntil([&] { return listener.heardAt().has_value(); }))
            throw std::runtime_error("the volume does not change");
        latencies.push_back(milliseconds(*listener.heardAt() - sent));
    }
    return median(std::move(latencies));
}

constexpr int starts = 11;
constexpr auto betweenStarts = 300ms; // so that all of the last one is over

double levelLatencyAfterPause() {
    Player player;
    player.start();
    const FoundPlugin plugin;
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
    const FoundPlugin plugin;
    first.reset();
    std::vector<double> latencies;
    for (int i = 0; i < starts; ++i) {
        restAtRandom(betweenStarts);
        Player player;
        latencies.push_back(untilLevel(player));
    }
    return median(std::move(latencies));
}

[[maybe_unused]] const bool added[] = {
    bench::addFigure(
        {.name = "plugin/latency/command",
         .metric = "from the application's call to the first cycle of the sink's monitor that has "
                   "the new volume, delivered to a listener; the graph's cycle (1024/48000 s) "
                   "included",
         .unit = "ms",
         .ours = &commandLatency,
         .peerName = {},
         .peer = {},
         .surroundings = &makePluginStage<0>}),
    bench::addFigure(
        {.name = "plugin/latency/level",
         .metric = "from the first cycle that a program's new stream plays to its first level at "
                   "the application",
         .unit = "ms",
         .ours = &levelLatencyOfNewStream,
         .peerName = {},
         .peer = {},
         .surroundings = &makePluginStage<0>}),
    bench::addFigure({.name = "plugin/latency/level/resumed",
                      .metric = "the same after a pause",
                      .unit = "ms",
                      .ours = &levelLatencyAfterPause,
                      .peerName = {},
                      .peer = {},
                      .surroundings = &makePluginStage<0>}),
};

} // namespace
