#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <pulse/pulseaudio.h>
#include <vector>

// A program that plays through the PulseAudio interface: PulsePlayer MILLISECONDS LEVEL [PERCENT].
// Each SIGUSR1 makes it play a new stream for so long (0: for ever). All samples are LEVEL, so that
// a recording shows the gain of each sample. With PERCENT it sets the volume of each stream before
// that plays, as browsers do. It says "ready" when it can take the signal.
namespace {

struct Player {
    std::size_t milliseconds;
    float level;
    int percent; // 0: as it comes
    pa_mainloop* loop;
    pa_context* context;
};

constexpr pa_sample_spec format{PA_SAMPLE_FLOAT32NE, 48000, 2};

class Stream {
  public:
    explicit Stream(const Player& player)
        : level_(player.level)
        , rest_(player.milliseconds * pa_bytes_per_second(&format) / 1000)
        , isEndless_(player.milliseconds == 0)
        , percent_(player.percent)
        , stream_(pa_stream_new(player.context, "constant", &format, nullptr)) {
        pa_stream_set_write_callback(
            stream_,
            [](pa_stream*, std::size_t bytes, void* data) {
                static_cast<Stream*>(data)->fill(bytes);
            },
            this);
        pa_stream_set_state_callback(
            stream_,
            [](pa_stream* stream, void* data) {
                if (pa_stream_get_state(stream) == PA_STREAM_READY)
                    static_cast<Stream*>(data)->begin();
            },
            this);
        pa_stream_connect_playback(stream_, nullptr, nullptr,
                                   percent_ > 0 ? PA_STREAM_START_CORKED : PA_STREAM_NOFLAGS,
                                   nullptr, nullptr);
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

  private:
    void begin() {
        if (percent_ == 0)
            return;
        pa_cvolume volume{};
        pa_cvolume_set(&volume, format.channels,
                       static_cast<pa_volume_t>(percent_) * PA_VOLUME_NORM / 100);
        pa_context* const context = pa_stream_get_context(stream_);
        pa_operation_unref(pa_context_set_sink_input_volume(context, pa_stream_get_index(stream_),
                                                            &volume, nullptr, nullptr));
        pa_operation_unref(pa_stream_cork(stream_, 0, nullptr, nullptr));
    }

    void fill(std::size_t bytes) {
        const std::size_t size = isEndless_ ? bytes : std::min(bytes, rest_);
        if (size == 0)
            return;
        const std::vector<float> samples(size / sizeof(float), level_);
        pa_stream_write(stream_, samples.data(), size, nullptr, 0, PA_SEEK_RELATIVE);
        rest_ -= isEndless_ ? 0 : size;
        if (rest_ == 0 && !isEndless_)
            pa_operation_unref(pa_stream_drain(
                stream_, [](pa_stream* stream, int, void*) { pa_stream_disconnect(stream); },
                nullptr));
    }

    const float level_;
    std::size_t rest_; // bytes that are still to be played
    const bool isEndless_;
    const int percent_;
    pa_stream* const stream_; // lasts as long as the program
};

void play(const Player& player) {
    static std::vector<std::unique_ptr<Stream>> streams;
    streams.push_back(std::make_unique<Stream>(player));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3 && argc != 4)
        return 2;
    pa_mainloop* const loop = pa_mainloop_new();
    Player player{std::strtoul(argv[1], nullptr, 10), std::strtof(argv[2], nullptr),
                  argc == 4 ? std::atoi(argv[3]) : 0, loop,
                  pa_context_new(pa_mainloop_get_api(loop), "pulse_player")};
    pa_signal_init(pa_mainloop_get_api(loop));
    pa_signal_new(
        SIGUSR1,
        [](pa_mainloop_api*, pa_signal_event*, int, void* data) {
            play(*static_cast<Player*>(data));
        },
        &player);
    pa_context_set_state_callback(
        player.context,
        [](pa_context* context, void* data) {
            const pa_context_state_t state = pa_context_get_state(context);
            if (!PA_CONTEXT_IS_GOOD(state))
                pa_mainloop_quit(static_cast<Player*>(data)->loop, 1);
            if (state != PA_CONTEXT_READY)
                return;
            std::puts("ready");
            std::fflush(stdout);
        },
        &player);
    pa_context_connect(player.context, nullptr, PA_CONTEXT_NOFLAGS, nullptr);
    int status = 0;
    pa_mainloop_run(loop, &status);
    return status;
}
