#include "VolumeProbe.h"

#include "support/WaitUntil.h"

#include <cmath>
#include <cstring>
#include <pipewire/keys.h>
#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>
#include <spa/param/props.h>
#include <stdexcept>

namespace bench {

using Clock = platform::MonotonicClock;

namespace {

constexpr std::uint32_t frameSize = 2 * sizeof(float);

pw_stream_events eventsOf(decltype(pw_stream_events::state_changed) stateChanged,
                          decltype(pw_stream_events::control_info) controlChanged,
                          decltype(pw_stream_events::process) process) {
    pw_stream_events events{};
    events.version = PW_VERSION_STREAM_EVENTS;
    events.state_changed = stateChanged;
    events.control_info = controlChanged;
    events.process = process;
    return events;
}

} // namespace

VolumeProbe::VolumeProbe() : events_(eventsOf(&stateChanged, &controlChanged, &process)) {
    pw_init(nullptr, nullptr);
    loop_ = pw_thread_loop_new("volume probe", nullptr);
    stream_ = pw_stream_new_simple(
        pw_thread_loop_get_loop(loop_), "volume probe",
        pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Playback", nullptr),
        &events_, this);
    std::uint8_t buffer[1024];
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, buffer, sizeof buffer);
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32;
    format.rate = 48000;
    format.channels = 2;
    format.position[0] = SPA_AUDIO_CHANNEL_FL;
    format.position[1] = SPA_AUDIO_CHANNEL_FR;
    const spa_pod* params[] = {spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format)};
    if (pw_stream_connect(
            stream_, PW_DIRECTION_OUTPUT, PW_ID_ANY,
            static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS),
            params, 1) < 0 ||
        pw_thread_loop_start(loop_) < 0 || !support::waitUntil([this] { return plays_.load(); }))
        throw std::runtime_error("the sound server does not play");
}

VolumeProbe::~VolumeProbe() {
    pw_thread_loop_stop(loop_);
    pw_stream_destroy(stream_);
    pw_thread_loop_destroy(loop_);
    pw_deinit();
}

Clock::time_point VolumeProbe::awaitChange() {
    if (!support::waitUntil([this] { return changedAt_ != 0; }))
        throw std::runtime_error("the volume does not change");
    return Clock::time_point(Clock::duration(changedAt_));
}

void VolumeProbe::stateChanged(void* self, pw_stream_state /*old*/, pw_stream_state state,
                               const char* /*error*/) {
    auto& probe = *static_cast<VolumeProbe*>(self);
    if (state != PW_STREAM_STATE_STREAMING)
        return;
    probe.node_ = pw_stream_get_node_id(probe.stream_);
    probe.plays_ = true;
}

void VolumeProbe::controlChanged(void* self, std::uint32_t id, const pw_stream_control* control) {
    constexpr float difference = 1e-4F;
    auto& probe = *static_cast<VolumeProbe*>(self);
    if (id != SPA_PROP_channelVolumes || control->n_values == 0 ||
        std::fabs(control->values[0] - probe.volume_) < difference)
        return;
    probe.volume_ = control->values[0];
    if (probe.changedAt_ == 0)
        probe.changedAt_ = Clock::now().time_since_epoch().count();
}

void VolumeProbe::process(void* self) {
    pw_stream* const stream = static_cast<VolumeProbe*>(self)->stream_;
    pw_buffer* const buffer = pw_stream_dequeue_buffer(stream);
    if (buffer == nullptr)
        return;
    const spa_data& data = buffer->buffer->datas[0];
    std::memset(data.data, 0, data.maxsize);
    data.chunk->offset = 0;
    data.chunk->stride = frameSize;
    data.chunk->size = data.maxsize / frameSize * frameSize;
    pw_stream_queue_buffer(stream, buffer);
}

} // namespace bench
