#include "platform/base/Mutex.h"
#include "platform/sound/SampleOutput.h"
#include "samplesound/Recording.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>
#include <string>
#include <utility>

namespace {

struct ThreadLoopDeleter {
    void operator()(pw_thread_loop* loop) const noexcept { pw_thread_loop_destroy(loop); }
};
struct ContextDeleter {
    void operator()(pw_context* context) const noexcept { pw_context_destroy(context); }
};
struct CoreDeleter {
    void operator()(pw_core* core) const noexcept { pw_core_disconnect(core); }
};
struct StreamDeleter {
    void operator()(pw_stream* stream) const noexcept { pw_stream_destroy(stream); }
};

/// The recording and the stream, on the loop's thread; but orders come from any.
class Player {
  public:
    Player(pw_loop* loop, std::string file, const platform::SampleOutput::Report& report)
        : loop_(loop), file_(std::move(file)), report_(report) {
        const auto serve = [](void* data, std::uint64_t) { static_cast<Player*>(data)->serve(); };
        wake_ = pw_loop_add_event(loop_, serve, this);
    }
    ~Player() { pw_loop_destroy_source(loop_, wake_); }
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    struct Order {
        double start;
        double length; ///< zero to stop
        float gain;
    };

    /// Replaces the one before, if that is still waiting.
    void post(const Order& order) {
        {
            const platform::ScopedLock lock(mutex_);
            order_ = order;
        }
        pw_loop_signal_event(loop_, wake_);
    }

  private:
    void serve();
    void play(const Order& order);
    bool prepare();
    void endSoon();
    void fill();
    void drained();

    static const pw_core_events coreEvents;
    static const pw_stream_events streamEvents;

    pw_loop* const loop_;
    const std::string file_;
    const platform::SampleOutput::Report report_;
    spa_source* wake_ = nullptr;
    platform::Mutex mutex_;
    std::optional<Order> order_ GUARDED_BY(mutex_);
    std::optional<Recording> recording_;
    std::unique_ptr<pw_context, ContextDeleter> context_;
    std::unique_ptr<pw_core, CoreDeleter> core_;
    spa_hook coreHook_{};
    bool broken_ = false;
    std::unique_ptr<pw_stream, StreamDeleter> stream_;
    spa_hook streamHook_{};
    std::size_t start_ = 0;    // of the piece
    std::size_t position_ = 0; // of the next sample
    std::size_t end_ = 0;
    float gain_ = 0;
    bool isFlushed_ = false;
    bool isOver_ = false; // everything has been played
};

const pw_core_events Player::coreEvents = [] {
    pw_core_events events{};
    events.version = PW_VERSION_CORE_EVENTS;
    events.error = [](void* data, std::uint32_t id, int, int result, const char*) {
        if (id == PW_ID_CORE && result == -EPIPE)
            static_cast<Player*>(data)->broken_ = true;
    };
    return events;
}();

const pw_stream_events Player::streamEvents = [] {
    pw_stream_events events{};
    events.version = PW_VERSION_STREAM_EVENTS;
    events.process = [](void* data) { static_cast<Player*>(data)->fill(); };
    events.drained = [](void* data) { static_cast<Player*>(data)->drained(); };
    return events;
}();

/// Reads the recording and connects to the server, if that has not been done or is broken.
bool Player::prepare() {
    if (!recording_)
        recording_ = Recording::read(file_, report_);
    if (std::exchange(broken_, false))
        core_.reset();
    if (context_ == nullptr)
        context_.reset(pw_context_new(
            loop_, pw_properties_new(PW_KEY_APP_NAME, platform::SampleOutput::clientName, nullptr),
            0));
    if (core_ == nullptr && context_ != nullptr) {
        core_.reset(pw_context_connect(context_.get(), nullptr, 0));
        if (core_ == nullptr) {
            report_(std::string("Couldn't play a sample sound: ") + std::strerror(errno));
            return false;
        }
        pw_core_add_listener(core_.get(), &coreHook_, &coreEvents, this);
    }
    return core_ != nullptr && !recording_->samples.empty();
}

void Player::serve() {
    if (std::exchange(isOver_, false))
        stream_.reset();
    std::optional<Order> order;
    {
        const platform::ScopedLock lock(mutex_);
        order = std::exchange(order_, std::nullopt);
    }
    if (order && order->length > 0)
        play(*order);
    else if (order)
        endSoon();
}

/// A stream starts late by its set-up time. The part of the piece that is missing by then is its
/// end, without which it would break off.
void Player::endSoon() {
    constexpr std::size_t shareOfSecond = 4;
    const std::size_t late = position_ == start_ ? 0 : recording_->rate / shareOfSecond;
    end_ = std::min(end_, position_ + late);
}

void Player::play(const Order& order) {
    stream_.reset();
    isFlushed_ = false;
    isOver_ = false;
    if (!prepare())
        return;
    const auto sample = [this](double time) {
        const double number = std::max(0.0, time) * recording_->rate;
        return std::min(static_cast<std::size_t>(number), recording_->samples.size());
    };
    start_ = position_ = sample(order.start);
    end_ = sample(order.start + order.length);
    gain_ = order.gain;
    // The volume is applied to the samples; the session manager must not change it.
    stream_.reset(
        pw_stream_new(core_.get(), "Sample sound",
                      pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY,
                                        "Playback", "state.restore-props", "false", nullptr)));
    if (stream_ == nullptr)
        return;
    spa_zero(streamHook_);
    pw_stream_add_listener(stream_.get(), &streamHook_, &streamEvents, this);
    std::uint8_t buffer[1024];
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(buffer, sizeof buffer);
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32;
    format.rate = recording_->rate;
    format.channels = 1;
    format.position[0] = SPA_AUDIO_CHANNEL_MONO;
    const spa_pod* parameter = spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
    constexpr auto flags =
        static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS);
    pw_stream_connect(stream_.get(), PW_DIRECTION_OUTPUT, PW_ID_ANY, flags, &parameter, 1);
}

void Player::fill() {
    pw_buffer* const buffer = pw_stream_dequeue_buffer(stream_.get());
    if (buffer == nullptr)
        return;
    spa_data& data = buffer->buffer->datas[0];
    std::size_t room = data.maxsize / sizeof(float);
    if (buffer->requested > 0)
        room = std::min<std::size_t>(room, buffer->requested);
    const std::size_t count = data.data != nullptr ? std::min(room, end_ - position_) : 0;
    auto* const out = static_cast<float*>(data.data);
    for (std::size_t index = 0; index < count; ++index)
        out[index] = recording_->samples[position_ + index] * gain_;
    position_ += count;
    data.chunk->offset = 0;
    data.chunk->stride = sizeof(float);
    data.chunk->size = static_cast<std::uint32_t>(count * sizeof(float));
    pw_stream_queue_buffer(stream_.get(), buffer);
    if (position_ == end_ && !std::exchange(isFlushed_, true))
        pw_stream_flush(stream_.get(), true);
}

/// The stream is not to be destroyed in its own call.
void Player::drained() {
    isOver_ = true;
    pw_loop_signal_event(loop_, wake_);
}

class PipeWireSampleOutput final : public platform::SampleOutput {
  public:
    PipeWireSampleOutput(const char* file, const platform::SampleOutput::Report& report) {
        pw_init(nullptr, nullptr);
        loop_.reset(pw_thread_loop_new("sample", nullptr));
        if (loop_ == nullptr)
            return;
        player_ = std::make_unique<Player>(pw_thread_loop_get_loop(loop_.get()), file, report);
        pw_thread_loop_start(loop_.get());
    }

    ~PipeWireSampleOutput() override {
        if (loop_ != nullptr)
            pw_thread_loop_stop(loop_.get());
        player_.reset();
    }

    void play(Seconds start, Seconds length, float gain) override {
        if (player_ != nullptr)
            player_->post({start.count(), length.count(), gain});
    }

    void stop() override {
        if (player_ != nullptr)
            player_->post({});
    }

  private:
    std::unique_ptr<pw_thread_loop, ThreadLoopDeleter> loop_;
    std::unique_ptr<Player> player_;
};

} // namespace

extern "C" [[gnu::visibility("default")]] platform::SampleOutput*
makeSampleOutput(const char* recording, const platform::SampleOutput::Report* report) {
    return new PipeWireSampleOutput(recording, *report);
}
