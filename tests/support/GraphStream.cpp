#include "support/GraphStream.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>
#include <stdexcept>
#include <utility>

namespace support {

namespace {

constexpr std::uint32_t rate = 48000;
constexpr std::uint32_t channels = 2;
constexpr std::uint32_t frameBytes = channels * sizeof(float);

const spa_pod* buildFormat(spa_pod_builder& builder) {
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32;
    format.rate = rate;
    format.channels = channels;
    format.position[0] = SPA_AUDIO_CHANNEL_FL;
    format.position[1] = SPA_AUDIO_CHANNEL_FR;
    return spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
}

} // namespace

/// The connection, with threads of its own, and its lock.
class GraphStream::Server {
  public:
    Server() {
        pw_init(nullptr, nullptr);
        loop_ = pw_thread_loop_new("graph-stream", nullptr);
        context_ =
            pw_context_new(pw_thread_loop_get_loop(loop_),
                           pw_properties_new(PW_KEY_CONFIG_NAME, "client-rt.conf", nullptr), 0);
        pw_thread_loop_start(loop_);
        const Lock lock(*this);
        core_ = pw_context_connect(context_, nullptr, 0);
    }
    ~Server() {
        pw_thread_loop_stop(loop_);
        if (core_ != nullptr)
            pw_core_disconnect(core_);
        pw_context_destroy(context_);
        pw_thread_loop_destroy(loop_);
        pw_deinit();
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    pw_core* core() const noexcept { return core_; }

    class Lock {
      public:
        explicit Lock(Server& server) : loop_(server.loop_) { pw_thread_loop_lock(loop_); }
        ~Lock() { pw_thread_loop_unlock(loop_); }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

      private:
        pw_thread_loop* const loop_;
    };

  private:
    pw_thread_loop* loop_ = nullptr;
    pw_context* context_ = nullptr;
    pw_core* core_ = nullptr;
};

const pw_stream_events GraphStream::streamEvents = [] {
    pw_stream_events events{};
    events.version = PW_VERSION_STREAM_EVENTS;
    events.process = [](void* data) { static_cast<GraphStream*>(data)->process(); };
    return events;
}();

std::unique_ptr<GraphStream> GraphStream::player(Work work) {
    return std::unique_ptr<GraphStream>(new GraphStream(Kind::player, std::move(work)));
}

std::unique_ptr<GraphStream> GraphStream::listener(Work work) {
    return std::unique_ptr<GraphStream>(new GraphStream(Kind::listener, std::move(work)));
}

GraphStream::GraphStream(Kind kind, Work work)
    : kind_(kind), work_(std::move(work)), server_(std::make_unique<Server>()) {
    if (server_->core() == nullptr)
        throw std::runtime_error("no sound server");
    const Server::Lock lock(*server_);
    connect();
}

GraphStream::~GraphStream() {
    const Server::Lock lock(*server_);
    pw_stream_destroy(stream_);
}

void GraphStream::connect() {
    const bool plays = kind_ == Kind::player;
    pw_properties* const properties = pw_properties_new(
        PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, plays ? "Playback" : "Capture", nullptr);
    if (!plays)
        pw_properties_set(properties, PW_KEY_STREAM_CAPTURE_SINK, "true");
    stream_ = pw_stream_new(server_->core(), plays ? "player" : "listener", properties);
    pw_stream_add_listener(stream_, &hook_, &streamEvents, this);

    std::array<std::uint8_t, 1024> space{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, space.data(), space.size());
    const spa_pod* format = buildFormat(builder);
    int flags = PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS;
    if (plays)
        flags |= PW_STREAM_FLAG_INACTIVE;
    pw_stream_connect(stream_, plays ? PW_DIRECTION_OUTPUT : PW_DIRECTION_INPUT, PW_ID_ANY,
                      static_cast<pw_stream_flags>(flags), &format, 1);
}

void GraphStream::setActive(bool active) {
    const Server::Lock lock(*server_);
    pw_stream_set_active(stream_, active);
}

void GraphStream::process() {
    pw_buffer* const taken = pw_stream_dequeue_buffer(stream_);
    if (taken == nullptr)
        return;
    spa_data& data = taken->buffer->datas[0];
    auto* const samples = static_cast<float*>(data.data);
    if (samples != nullptr && kind_ == Kind::player) {
        const std::uint64_t room = data.maxsize / frameBytes;
        const std::uint64_t frames =
            taken->requested != 0 ? std::min(taken->requested, room) : room;
        work_({samples, frames * channels});
        data.chunk->offset = 0;
        data.chunk->stride = frameBytes;
        data.chunk->size = static_cast<std::uint32_t>(frames * frameBytes);
    } else if (samples != nullptr) {
        work_({samples + data.chunk->offset / sizeof(float), data.chunk->size / sizeof(float)});
    }
    pw_stream_queue_buffer(stream_, taken);
}

} // namespace support
