#include "plugin/levels/LevelMeter.h"

#include "platform/base/SystemLog.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

using platform::MonotonicClock;

namespace {

// The library loses the descriptors that the server still sends for a filter which goes while it is
// being set up.
constexpr std::chrono::seconds makingTime{1};

constexpr int mostFailures = 8; // of filters, in one connection
constexpr int mostLinks = 3;    // for one tap, without anything measured between

// Longer than any cycle. Without a peak for so long, nothing is played.
constexpr std::chrono::milliseconds longestSilence{600};

} // namespace

/// An input on loan from a filter, with the link to it as soon as the filter's port is known.
class LevelMeter::Tap {
  public:
    Tap(MeterFilter& filter, std::size_t input) noexcept : filter_(filter), input_(input) {}
    ~Tap() {
        link_.reset();
        filter_.returnInput(input_);
    }
    Tap(const Tap&) = delete;
    Tap& operator=(const Tap&) = delete;

    const MeterFilter& filter() const noexcept { return filter_; }

    void connect(pw_core& core, const MeterTap& plan, const AudioGraph& graph,
                 const std::function<void()>& changed);

    /// The peak since the last call; nothing when nothing of this stream has been measured.
    std::optional<float> takePeak() noexcept;

  private:
    MeterFilter& filter_;
    const std::size_t input_;
    std::unique_ptr<MeterLink> link_;
    int linksMade_ = 0;
    bool listening_ = false;
};

void LevelMeter::Tap::connect(pw_core& core, const MeterTap& plan, const AudioGraph& graph,
                              const std::function<void()>& changed) {
    if (link_ != nullptr && link_->isLost())
        link_.reset();
    if (link_ != nullptr) {
        // Up to now the input may have held a peak of the stream that had it before.
        if (link_->isMade() && !std::exchange(listening_, true))
            filter_.takePeak(input_);
        return;
    }
    const auto node = filter_.nodeId();
    const auto port = node ? graph.inputPort(*node, input_) : std::nullopt;
    if (!port || linksMade_ == mostLinks)
        return;
    if (++linksMade_ == mostLinks)
        platform::systemLog(platform::LogPriority::warning,
                            "The level of stream %u can't be measured reliably", plan.stream);
    listening_ = false;
    link_ = std::make_unique<MeterLink>(core, MeterLink::Ends{plan.stream, plan.port, *node, *port},
                                        changed);
}

std::optional<float> LevelMeter::Tap::takePeak() noexcept {
    if (!listening_)
        return std::nullopt;
    const auto peak = filter_.takePeak(input_);
    if (peak)
        linksMade_ = 0;
    return peak;
}

struct LevelMeter::Channel {
    MeterTap plan;
    std::unique_ptr<Tap> tap;
    MonotonicClock::time_point measured;
};

struct LevelMeter::Stream {
    std::uint32_t id;
    std::vector<Channel> channels;
    std::vector<ChannelPeak> peaks; // one for each channel
};

LevelMeter::LevelMeter(pw_core& core, std::function<void()> changed)
    : core_(core), changed_(std::move(changed)) {}

LevelMeter::~LevelMeter() = default;

void LevelMeter::reconcile(const std::vector<MeterTap>& wanted, const AudioGraph& graph) {
    dropRetired();
    dropBroken();
    takeOver(wanted);
    makeRoom();
    for (Stream& stream : streams_) {
        for (Channel& channel : stream.channels)
            tap(channel, graph);
    }
    dropIdleFilters();
}

void LevelMeter::rebuild() {
    for (Stream& stream : streams_) {
        for (Channel& channel : stream.channels)
            channel.tap.reset();
    }
    for (SinkFilter& each : std::exchange(filters_, {}))
        retire(std::move(each));
    failures_ = 0;
}

void LevelMeter::collect() {
    const auto now = MonotonicClock::now();
    for (Stream& stream : streams_) {
        for (std::size_t i = 0; i < stream.channels.size(); ++i) {
            Channel& channel = stream.channels[i];
            float& peak = stream.peaks[i].peak;
            const auto taken =
                channel.tap != nullptr ? channel.tap->takePeak() : std::optional<float>();
            if (taken) {
                peak = *taken;
                channel.measured = now;
            } else if (peak > 0.0F && now - channel.measured > longestSilence) {
                peak = 0.0F;
            }
        }
    }
}

std::span<const ChannelPeak> LevelMeter::peaksOf(std::uint32_t stream) const {
    const auto found = find(stream);
    return found != streams_.end() ? std::span<const ChannelPeak>(found->peaks)
                                   : std::span<const ChannelPeak>();
}

std::vector<LevelMeter::Stream>::const_iterator LevelMeter::find(std::uint32_t stream) const {
    const auto place = std::ranges::lower_bound(streams_, stream, {}, &Stream::id);
    return place != streams_.end() && place->id == stream ? place : streams_.end();
}

void LevelMeter::dropBroken() {
    std::vector<const MeterFilter*> broken;
    for (const SinkFilter& each : filters_) {
        if (each.filter->isBroken())
            broken.push_back(each.filter.get());
    }
    for (const MeterFilter* const filter : broken)
        dropFilter(*filter);
    failures_ += static_cast<int>(broken.size());
}

/// A channel that is wanted still keeps its tap, and one that is to be measured elsewhere its peak,
/// so that nothing shows of the change.
void LevelMeter::takeOver(const std::vector<MeterTap>& wanted) {
    std::vector<Stream> before = std::exchange(streams_, {});
    auto known = before.begin();
    for (const MeterTap& plan : wanted) {
        if (streams_.empty() || streams_.back().id != plan.stream)
            streams_.push_back({plan.stream, {}, {}});
        Stream& stream = streams_.back();
        Channel channel{plan, nullptr, {}};
        float peak = 0.0F;
        while (known != before.end() && known->id < plan.stream)
            ++known;
        const std::size_t place = stream.channels.size();
        if (known != before.end() && known->id == plan.stream && place < known->channels.size()) {
            Channel& last = known->channels[place];
            peak = known->peaks[place].peak;
            channel.measured = last.measured;
            if (last.plan == plan)
                channel.tap = std::move(last.tap);
        }
        stream.channels.push_back(std::move(channel));
        stream.peaks.push_back({plan.channel, peak});
    }
}

void LevelMeter::makeRoom() {
    std::map<std::uint32_t, std::size_t> wanted; // inputs by sink
    for (const Stream& stream : streams_) {
        for (const Channel& channel : stream.channels)
            ++wanted[channel.plan.sink];
    }
    for (const auto& [sink, inputs] : wanted)
        makeRoomAt(sink, inputs);
}

/// All filters of a sink but one are as large as can be; that one grows by being replaced.
void LevelMeter::makeRoomAt(std::uint32_t sink, std::size_t needed) {
    std::size_t present = 0;
    const MeterFilter* small = nullptr;
    for (const SinkFilter& each : filters_) {
        if (each.sink != sink)
            continue;
        present += each.filter->inputs();
        if (each.filter->inputs() < MeterFilter::mostInputs)
            small = each.filter.get();
    }
    if (present >= needed)
        return;
    if (small != nullptr) {
        present -= small->inputs();
        dropFilter(*small);
    }
    while (present < needed) {
        const std::size_t inputs = MeterFilter::inputsFor(needed - present);
        if (!addFilter(sink, inputs))
            return;
        present += inputs;
    }
}

bool LevelMeter::addFilter(std::uint32_t sink, std::size_t inputs) {
    if (failures_ >= mostFailures)
        return false;
    auto filter = MeterFilter::create(core_, inputs, changed_);
    if (filter == nullptr) {
        ++failures_;
        return false;
    }
    filters_.push_back({sink, std::move(filter), MonotonicClock::now()});
    return true;
}

void LevelMeter::dropFilter(const MeterFilter& filter) {
    for (Stream& stream : streams_) {
        for (Channel& channel : stream.channels) {
            if (channel.tap != nullptr && &channel.tap->filter() == &filter)
                channel.tap.reset();
        }
    }
    const auto each = std::ranges::find_if(
        filters_, [&filter](const auto& other) { return other.filter.get() == &filter; });
    SinkFilter gone = std::move(*each);
    filters_.erase(each);
    retire(std::move(gone));
}

void LevelMeter::tap(Channel& channel, const AudioGraph& graph) {
    for (auto each = filters_.begin(); channel.tap == nullptr && each != filters_.end(); ++each) {
        if (each->sink != channel.plan.sink)
            continue;
        if (const auto input = each->filter->borrowInput())
            channel.tap = std::make_unique<Tap>(*each->filter, *input);
    }
    if (channel.tap != nullptr)
        channel.tap->connect(core_, channel.plan, graph, changed_);
}

void LevelMeter::dropIdleFilters() {
    std::vector<const MeterFilter*> idle;
    for (const SinkFilter& each : filters_) {
        if (each.filter->freeInputs() == each.filter->inputs())
            idle.push_back(each.filter.get());
    }
    for (const MeterFilter* const filter : idle)
        dropFilter(*filter);
}

void LevelMeter::retire(SinkFilter filter) {
    if (MonotonicClock::now() - filter.made < makingTime)
        retired_.push_back(std::move(filter));
}

void LevelMeter::dropRetired() {
    const auto now = MonotonicClock::now();
    std::erase_if(retired_,
                  [now](const SinkFilter& each) { return now - each.made >= makingTime; });
}

std::optional<MonotonicClock::time_point> LevelMeter::nextDrop() const noexcept {
    std::optional<MonotonicClock::time_point> next;
    for (const SinkFilter& each : retired_)
        next = std::min(next.value_or(MonotonicClock::time_point::max()), each.made + makingTime);
    return next;
}
