#pragma once

#include "platform/base/MonotonicClock.h"
#include "plugin/levels/MeterFilter.h"
#include "plugin/levels/MeterLink.h"
#include "plugin/server/AudioGraph.h"
#include "plugin/volume/StreamVolume.h"

#include <chrono>
#include <functional>
#include <memory>
#include <span>
#include <vector>

/// Measures the peaks of streams, each channel by itself, at an input of a meter filter. Streams of
/// one sink share filters, since a filter that measured at two sinks would tie their clocks
/// together. The run loop's thread only; destroy it before the server's connection.
class LevelMeter {
  public:
    /// `changed` is called when another reconcile() is due; it must not call it itself.
    LevelMeter(pw_core& core, std::function<void()> changed);
    ~LevelMeter();
    LevelMeter(const LevelMeter&) = delete;
    LevelMeter& operator=(const LevelMeter&) = delete;

    /// Makes one step towards measuring exactly `wanted`; looks up the filters' own ports in
    /// `graph`. If `wanted` is empty, we have no objects left in the server after nextDrop(). The
    /// taps must be ordered by stream id, then by channel.
    void reconcile(const std::vector<MeterTap>& wanted, const AudioGraph& graph);

    /// When another reconcile() is due if nothing else happens.
    [[nodiscard]] std::optional<platform::MonotonicClock::time_point> nextDrop() const noexcept;

    /// Destroys all objects in the server, in any state; the next reconcile() creates them again.
    /// Peaks keep their values meanwhile.
    void rebuild();

    /// Takes what has been measured since the last call.
    void collect();

    /// The last peaks from collect(), valid until the next reconcile(). If a cycle is longer than
    /// the time between two calls, those of the last cycle.
    [[nodiscard]] std::span<const ChannelPeak> peaksOf(std::uint32_t stream) const;

  private:
    class Tap;
    struct Channel;
    struct Stream;
    struct SinkFilter {
        std::uint32_t sink;
        std::unique_ptr<MeterFilter> filter;
        platform::MonotonicClock::time_point made;
    };

    void dropBroken();
    void takeOver(const std::vector<MeterTap>& wanted);
    std::vector<Stream>::const_iterator find(std::uint32_t stream) const;
    void makeRoom();
    void makeRoomAt(std::uint32_t sink, std::size_t needed);
    bool addFilter(std::uint32_t sink, std::size_t inputs);
    void dropFilter(const MeterFilter& filter);
    void tap(Channel& channel, const AudioGraph& graph);
    void dropIdleFilters();
    void retire(SinkFilter filter);
    void dropRetired();

    pw_core& core_;
    const std::function<void()> changed_;
    int failures_ = 0;
    std::vector<SinkFilter> filters_;
    std::vector<SinkFilter> retired_; // unused, but too new to be destroyed
    std::vector<Stream> streams_;     // by number; their taps go before the filters
};
