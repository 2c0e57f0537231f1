#include <algorithm>
#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>
#include <string>
#include <unistd.h>
#include <vector>

// A program that plays: StreamPlayer STREAMS MILLISECONDS LEVEL. Each SIGUSR1 makes it play so many
// new streams for so long (0: for ever). All samples are LEVEL, so that a recording shows the gain
// of each sample. It says "ready" when it can take the signal. Its streams are described as "of
// PID".
namespace {

constexpr std::uint32_t channels = 2;

struct Player {
    int streams;
    int milliseconds;
    float level;
    pw_main_loop* loop;
    pw_core* core;
};

class Stream {
  public:
    explicit Stream(const Player& player)
        : level_(player.level)
        , stream_(pw_stream_new(player.core, ("of " + std::to_string(::getpid())).c_str(),
                                pw_properties_new(PW_KEY_APP_NAME, "stream_player",
                                                  PW_KEY_NODE_LATENCY, "1024/48000", nullptr))) {
        static const pw_stream_events events = [] {
            pw_stream_events all{};
            all.version = PW_VERSION_STREAM_EVENTS;
            all.process = [](void* data) { static_cast<Stream*>(data)->fill(); };
            return all;
        }();
        pw_stream_add_listener(stream_, &hook_, &events, this);
        std::array<std::byte, 1024> space; // NOLINT(cppcoreguidelines-pro-type-member-init)
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, space.data(), space.size());
        spa_audio_info_raw format{};
        format.format = SPA_AUDIO_FORMAT_F32;
        format.rate = 48000;
        format.channels = channels;
        format.position[0] = SPA_AUDIO_CHANNEL_FL;
        format.position[1] = SPA_AUDIO_CHANNEL_FR;
        const spa_pod* parameters =
            spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
        pw_stream_connect(stream_, PW_DIRECTION_OUTPUT, PW_ID_ANY,
                          static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT |
                                                       PW_STREAM_FLAG_MAP_BUFFERS |
                                                       PW_STREAM_FLAG_RT_PROCESS),
                          &parameters, 1);
    }
    ~Stream() { pw_stream_destroy(stream_); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

  private:
    void fill() {
        pw_buffer* const buffer = pw_stream_dequeue_buffer(stream_);
        if (buffer == nullptr)
            return;
        spa_data& data = buffer->buffer->datas[0];
        constexpr std::uint32_t frameBytes = channels * sizeof(float);
        std::uint32_t frames = data.maxsize / frameBytes;
        if (buffer->requested > 0)
            frames = std::min(frames, static_cast<std::uint32_t>(buffer->requested));
        std::fill_n(static_cast<float*>(data.data), frames * channels, level_);
        *data.chunk = {0, frames * frameBytes, frameBytes, 0};
        pw_stream_queue_buffer(stream_, buffer);
    }

    const float level_;
    pw_stream* const stream_;
    spa_hook hook_{};
};

/// The streams that one signal began.
struct Round {
    std::vector<std::unique_ptr<Stream>> streams;
};

void play(const Player& player) {
    auto* const round = new Round; // deletes itself below, or lasts as long as the program
    for (int i = 0; i < player.streams; ++i)
        round->streams.push_back(std::make_unique<Stream>(player));
    if (player.milliseconds == 0)
        return;
    pw_loop* const loop = pw_main_loop_get_loop(player.loop);
    spa_source* const timer = pw_loop_add_timer(
        loop, [](void* data, std::uint64_t) { static_cast<Round*>(data)->streams.clear(); }, round);
    timespec delay{player.milliseconds / 1000, player.milliseconds % 1000 * 1000000L};
    pw_loop_update_timer(loop, timer, &delay, nullptr, false);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4)
        return 2;
    sigset_t begin{}; // in every thread, so that the loop gets it
    sigemptyset(&begin);
    sigaddset(&begin, SIGUSR1);
    sigprocmask(SIG_BLOCK, &begin, nullptr);
    pw_init(nullptr, nullptr);
    Player player{std::atoi(argv[1]), std::atoi(argv[2]), std::strtof(argv[3], nullptr),
                  pw_main_loop_new(nullptr), nullptr};
    pw_loop* const loop = pw_main_loop_get_loop(player.loop);
    player.core = pw_context_connect(pw_context_new(loop, nullptr, 0), nullptr, 0);
    if (player.core == nullptr)
        return 1;
    pw_loop_add_signal(
        loop, SIGUSR1, [](void* data, int) { play(*static_cast<Player*>(data)); }, &player);
    std::puts("ready");
    std::fflush(stdout);
    return pw_main_loop_run(player.loop);
}
