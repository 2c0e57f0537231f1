#pragma once

#include "platform/MonotonicClock.h"
#include "plugin/AudioGraph.h"
#include "plugin/MeterFilter.h"
#include "plugin/MeterLink.h"
#include "plugin/StreamVolume.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// Measures the peaks of streams, each channel by itself, at an input of a meter filter. Streams of
/// one sink share filters, since a filter that measured at two sinks would tie their clocks
/// together. The run loop's thread only; must go before the server's connection does.
class LevelMeter {
  public:
    /// `changed` is called when another reconcile() is due; it must not make the call itself.
    LevelMeter(pw_core& core, std::function<void()> changed);
    ~LevelMeter();
    LevelMeter(const LevelMeter&) = delete;
    LevelMeter& operator=(const LevelMeter&) = delete;

    /// Goes a step towards measuring `wanted` and nothing else; the filters' own ports are looked
    /// up in `graph`.
    void reconcile(const std::vector<MeterTap>& wanted, const AudioGraph& graph);

    /// Whether there are filters without use, which a reconcile() after idleTime drops.
    bool hasIdleFilters() const noexcept;

    /// How long a filter without use is kept. The library loses the descriptors that the server
    /// still sends for a filter which has just gone, so none goes while it is being set up; and the
    /// next stream is often close.
    static constexpr std::chrono::seconds idleTime{3};

    /// Takes what has been measured since the last call.
    void collect();

    /// What collect() took last. Within a cycle longer than the time between two calls, that of the
    /// last cycle.
    std::vector<ChannelPeak> peaksOf(std::uint32_t stream) const;

  private:
    class Tap;
    struct SinkFilter {
        std::uint32_t sink;
        std::unique_ptr<MeterFilter> filter;
        std::optional<platform::MonotonicClock::time_point> idleSince = std::nullopt;
    };

    void dropBroken();
    void dropUnwanted(const std::vector<MeterTap>& wanted);
    void addMissing(const std::vector<MeterTap>& wanted);
    std::unique_ptr<Tap> makeTap(const MeterTap& wanted);
    bool isIdle(const SinkFilter& filter) const noexcept;
    void dropIdleFilters();

    pw_core& core_;
    const std::function<void()> changed_;
    int failures_ = 0;
    std::vector<SinkFilter> filters_;
    std::vector<std::unique_ptr<Tap>> taps_; // go before the filters
};
