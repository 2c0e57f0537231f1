#include "plugin/LevelMeter.h"

#include "platform/SystemLog.h"

#include <algorithm>
#include <utility>

using platform::MonotonicClock;

namespace {

constexpr int mostFailures = 8; // of filters, in one connection
constexpr int mostLinks = 3;    // for one tap

// Longer than any cycle. Without a peak for so long, nothing is played.
constexpr std::chrono::milliseconds longestSilence{600};

} // namespace

/// An input on loan from a filter, with the link to it as soon as the filter's port is known.
class LevelMeter::Tap {
  public:
    Tap(const MeterTap& plan, MeterFilter& filter, std::size_t input) noexcept
        : plan_(plan), filter_(filter), input_(input) {}
    ~Tap() {
        link_.reset();
        filter_.returnInput(input_);
    }
    Tap(const Tap&) = delete;
    Tap& operator=(const Tap&) = delete;

    const MeterTap& plan() const noexcept { return plan_; }
    const MeterFilter* filter() const noexcept { return &filter_; }
    float peak() const noexcept { return peak_; }

    void connect(pw_core& core, const AudioGraph& graph, const std::function<void()>& changed);
    void collect(MonotonicClock::time_point now) noexcept;

  private:
    const MeterTap plan_;
    MeterFilter& filter_;
    const std::size_t input_;
    std::unique_ptr<MeterLink> link_;
    int linksMade_ = 0;
    bool listening_ = false;
    float peak_ = 0.0F;
    MonotonicClock::time_point measured_;
};

void LevelMeter::Tap::connect(pw_core& core, const AudioGraph& graph,
                              const std::function<void()>& changed) {
    if (link_ != nullptr && link_->isLost())
        link_.reset();
    const auto node = filter_.nodeId();
    const auto port = node ? graph.inputPort(*node, input_) : std::nullopt;
    if (link_ != nullptr || !port || linksMade_ == mostLinks)
        return;
    if (++linksMade_ == mostLinks)
        platform::systemLog(platform::LogPriority::warning,
                            "The level of stream %u can't be measured reliably", plan_.stream);
    listening_ = false;
    link_ = std::make_unique<MeterLink>(
        core, MeterLink::Ends{plan_.stream, plan_.port, *node, *port}, changed);
}

void LevelMeter::Tap::collect(MonotonicClock::time_point now) noexcept {
    if (link_ == nullptr || !link_->isMade())
        return;
    const auto peak = filter_.takePeak(input_);
    // Up to now the input may have held a peak of the stream that had it before.
    if (!std::exchange(listening_, true))
        return;
    if (peak) {
        peak_ = *peak;
        measured_ = now;
    } else if (now - measured_ > longestSilence) {
        peak_ = 0.0F;
    }
}

LevelMeter::LevelMeter(pw_core& core, std::function<void()> changed)
    : core_(core), changed_(std::move(changed)) {}

LevelMeter::~LevelMeter() = default;

void LevelMeter::reconcile(const std::vector<MeterTap>& wanted, const AudioGraph& graph) {
    dropBroken();
    dropUnwanted(wanted);
    addMissing(wanted);
    dropIdleFilters();
    for (const auto& tap : taps_)
        tap->connect(core_, graph, changed_);
}

void LevelMeter::collect() {
    const auto now = MonotonicClock::now();
    for (const auto& tap : taps_)
        tap->collect(now);
}

std::vector<ChannelPeak> LevelMeter::peaksOf(std::uint32_t stream) const {
    std::vector<ChannelPeak> peaks;
    for (const auto& tap : taps_) {
        if (tap->plan().stream == stream)
            peaks.push_back({tap->plan().channel, tap->peak()});
    }
    return peaks;
}

void LevelMeter::dropBroken() {
    std::erase_if(taps_, [](const auto& tap) { return tap->filter()->isBroken(); });
    failures_ += static_cast<int>(
        std::erase_if(filters_, [](const auto& each) { return each.filter->isBroken(); }));
}

void LevelMeter::dropUnwanted(const std::vector<MeterTap>& wanted) {
    std::erase_if(taps_, [&wanted](const auto& tap) {
        return std::find(wanted.begin(), wanted.end(), tap->plan()) == wanted.end();
    });
}

void LevelMeter::addMissing(const std::vector<MeterTap>& wanted) {
    for (const MeterTap& plan : wanted) {
        const bool present = std::any_of(taps_.begin(), taps_.end(),
                                         [&plan](const auto& tap) { return tap->plan() == plan; });
        if (present)
            continue;
        if (auto tap = makeTap(plan))
            taps_.push_back(std::move(tap));
    }
}

std::unique_ptr<LevelMeter::Tap> LevelMeter::makeTap(const MeterTap& wanted) {
    for (const SinkFilter& each : filters_) {
        if (each.sink != wanted.sink)
            continue;
        if (const auto input = each.filter->borrowInput())
            return std::make_unique<Tap>(wanted, *each.filter, *input);
    }
    if (failures_ >= mostFailures)
        return nullptr;
    auto filter = MeterFilter::create(core_, changed_);
    if (filter == nullptr) {
        ++failures_;
        return nullptr;
    }
    const auto input = filter->borrowInput();
    auto tap = std::make_unique<Tap>(wanted, *filter, input.value());
    filters_.push_back({wanted.sink, std::move(filter), std::nullopt});
    return tap;
}

bool LevelMeter::isIdle(const SinkFilter& filter) const noexcept {
    return std::none_of(taps_.begin(), taps_.end(), [&filter](const auto& tap) {
        return tap->filter() == filter.filter.get();
    });
}

bool LevelMeter::hasIdleFilters() const noexcept {
    return std::any_of(filters_.begin(), filters_.end(),
                       [](const SinkFilter& each) { return each.idleSince.has_value(); });
}

void LevelMeter::dropIdleFilters() {
    const auto now = MonotonicClock::now();
    for (SinkFilter& each : filters_) {
        if (!isIdle(each))
            each.idleSince.reset();
        else if (!each.idleSince)
            each.idleSince = now;
    }
    std::erase_if(filters_, [now](const SinkFilter& each) {
        return each.idleSince && now - *each.idleSince >= idleTime;
    });
}
