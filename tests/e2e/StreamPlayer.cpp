#include <algorithm>
#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <memory>
#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>
#include <string>
#include <unistd.h>
#include <vector>

// A program that plays: StreamPlayer STREAMS MILLISECONDS LEVEL [PROPERTIES]. Each SIGUSR1 makes it
// play so many new streams for so long (0: for ever). All samples are LEVEL, so that a recording
// shows the gain of each sample. SIGUSR2 ends all of them; SIGHUP says of each that it belongs to a
// group of filters. It says "ready" when it can take the signals. It connects with the PROPERTIES,
// in SPA's JSON, and its streams are described as "of PID".
namespace {

constexpr std::uint32_t channels = 2;

class Stream {
  public:
    Stream(pw_core* core, float level)
        : level_(level)
        , stream_(pw_stream_new(core, ("of " + std::to_string(::getpid())).c_str(),
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

    void joinFilters() {
        const spa_dict_item item{PW_KEY_NODE_LINK_GROUP, "filters"};
        const spa_dict dictionary{0, 1, &item};
        pw_stream_update_properties(stream_, &dictionary);
    }

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

struct Player {
    using Streams = std::vector<std::unique_ptr<Stream>>;

    int streams;
    int milliseconds;
    float level;
    pw_loop* loop;
    pw_core* core;
    std::list<Streams> rounds; // what each signal began

    void play() {
        Streams& round = rounds.emplace_back();
        for (int i = 0; i < streams; ++i)
            round.push_back(std::make_unique<Stream>(core, level));
        if (milliseconds == 0)
            return;
        spa_source* const timer = pw_loop_add_timer(
            loop, [](void* data, std::uint64_t) { static_cast<Streams*>(data)->clear(); }, &round);
        timespec delay{milliseconds / 1000, milliseconds % 1000 * 1000000L};
        pw_loop_update_timer(loop, timer, &delay, nullptr, false);
    }

    void obey(int signal) {
        if (signal == SIGUSR1)
            return play();
        for (Streams& round : rounds) {
            if (signal == SIGUSR2)
                round.clear();
            for (const auto& stream : round)
                stream->joinFilters();
        }
    }
};

} // namespace

int main(int argc, char** argv) {
    if (argc < 4)
        return 2;
    constexpr std::array<int, 3> signals{SIGUSR1, SIGUSR2, SIGHUP};
    sigset_t blocked{}; // in every thread, so that the loop gets them
    sigemptyset(&blocked);
    for (const int signal : signals)
        sigaddset(&blocked, signal);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    pw_init(nullptr, nullptr);
    pw_main_loop* const loop = pw_main_loop_new(nullptr);
    Player player{std::atoi(argv[1]),
                  std::atoi(argv[2]),
                  std::strtof(argv[3], nullptr),
                  pw_main_loop_get_loop(loop),
                  nullptr,
                  {}};
    player.core = pw_context_connect(pw_context_new(player.loop, nullptr, 0),
                                     pw_properties_new_string(argc > 4 ? argv[4] : "{}"), 0);
    if (player.core == nullptr)
        return 1;
    for (const int signal : signals)
        pw_loop_add_signal(
            player.loop, signal,
            [](void* data, int number) { static_cast<Player*>(data)->obey(number); }, &player);
    std::puts("ready");
    std::fflush(stdout);
    return pw_main_loop_run(loop);
}
