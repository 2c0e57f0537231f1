#include "plugin/levels/MeterFilter.h"

#include "platform/base/SystemLog.h"
#include "plugin/levels/SamplePeak.h"
#include "plugin/server/AudioGraph.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <string>

namespace {

void raise(std::atomic<float>& peak, float measured) noexcept {
    float held = peak.load(std::memory_order_relaxed);
    // The other thread only ever takes the peak away, so this succeeds after a turn or two.
    while (measured > held &&
           !peak.compare_exchange_weak(held, measured, std::memory_order_relaxed)) {
    }
}

} // namespace

const pw_filter_events MeterFilter::filterEvents = [] {
    pw_filter_events events{};
    events.version = PW_VERSION_FILTER_EVENTS;
    events.state_changed = [](void* data, pw_filter_state, pw_filter_state state,
                              const char* error) {
        static_cast<MeterFilter*>(data)->stateChanged(state, error);
    };
    events.process = &MeterFilter::measure;
    return events;
}();

MeterFilter::MeterFilter(std::size_t inputs, std::function<void()> changed)
    : changed_(std::move(changed)), borrowed_(std::clamp(inputs, fewestInputs, mostInputs)) {
    rt_.peaks = std::vector<std::atomic<float>>(borrowed_.size());
    for (std::atomic<float>& peak : rt_.peaks)
        peak = Realtime::nothingMeasured;
}

MeterFilter::~MeterFilter() = default;

std::size_t MeterFilter::inputsFor(std::size_t needed) noexcept {
    const std::size_t whole = std::bit_ceil(std::clamp(needed, fewestInputs, mostInputs));
    const std::size_t less = whole / 4 * 3;
    return std::max(needed <= less ? less : whole, fewestInputs);
}

std::unique_ptr<MeterFilter> MeterFilter::create(pw_core& core, std::size_t inputs,
                                                 std::function<void()> changed) {
    std::unique_ptr<MeterFilter> filter(new MeterFilter(inputs, std::move(changed)));
    const int result = filter->connect(core);
    if (result >= 0)
        return filter;
    platform::systemLog(platform::LogPriority::error, "Couldn't make a level meter: %s (%d)",
                        std::strerror(-result), -result);
    return nullptr;
}

int MeterFilter::connect(pw_core& core) {
    // Without wanting a driver it is scheduled only together with the streams that it measures.
    pw_properties* const properties = pw_properties_new(
        PW_KEY_NODE_NAME, kMeterNodeName, PW_KEY_NODE_DESCRIPTION, "Tonvale level meter",
        PW_KEY_NODE_WANT_DRIVER, "false", PW_KEY_NODE_ALWAYS_PROCESS, "false", nullptr);
    filter_.reset(pw_filter_new(&core, kMeterNodeName, properties));
    if (filter_ == nullptr)
        return -errno;
    pw_filter_add_listener(filter_.get(), &hook_, &filterEvents, this);
    if (!addInputs())
        return -errno;
    return pw_filter_connect(filter_.get(), PW_FILTER_FLAG_RT_PROCESS, nullptr, 0);
}

bool MeterFilter::addInputs() {
    rt_.ports.reserve(inputs());
    for (std::size_t i = 0; i < inputs(); ++i) {
        pw_properties* const properties =
            pw_properties_new(PW_KEY_FORMAT_DSP, "32 bit float mono audio", PW_KEY_PORT_NAME,
                              ("input_" + std::to_string(i)).c_str(), nullptr);
        void* const port =
            pw_filter_add_port(filter_.get(), PW_DIRECTION_INPUT, PW_FILTER_PORT_FLAG_MAP_BUFFERS,
                               0, properties, nullptr, 0);
        if (port == nullptr)
            return false;
        rt_.ports.push_back(port);
    }
    return true;
}

std::optional<std::uint32_t> MeterFilter::nodeId() const {
    const std::uint32_t id = pw_filter_get_node_id(filter_.get());
    return id != SPA_ID_INVALID ? std::optional(id) : std::nullopt;
}

void MeterFilter::stateChanged(pw_filter_state state, const char* error) {
    if (state == PW_FILTER_STATE_ERROR) {
        platform::systemLog(platform::LogPriority::error, "A level meter failed: %s",
                            error != nullptr ? error : "no reason given");
        broken_ = true;
    }
    changed_();
}

std::size_t MeterFilter::freeInputs() const noexcept {
    return static_cast<std::size_t>(std::count(borrowed_.begin(), borrowed_.end(), false));
}

std::optional<std::size_t> MeterFilter::borrowInput() noexcept {
    const auto free = std::find(borrowed_.begin(), borrowed_.end(), false);
    if (free == borrowed_.end())
        return std::nullopt;
    *free = true;
    return static_cast<std::size_t>(free - borrowed_.begin());
}

std::optional<float> MeterFilter::takePeak(std::size_t input) noexcept {
    const float peak =
        rt_.peaks[input].exchange(Realtime::nothingMeasured, std::memory_order_relaxed);
    return peak >= 0.0F ? std::optional(peak) : std::nullopt;
}

void MeterFilter::measure(void* data, spa_io_position* position) noexcept {
    Realtime& rt = static_cast<MeterFilter*>(data)->rt_;
    const auto samples = static_cast<std::uint32_t>(position->clock.duration);
    for (std::size_t i = 0; i < rt.ports.size(); ++i) {
        if (const void* const buffer = pw_filter_get_dsp_buffer(rt.ports[i], samples))
            raise(rt.peaks[i], samplePeak({static_cast<const float*>(buffer), samples}));
    }
}
