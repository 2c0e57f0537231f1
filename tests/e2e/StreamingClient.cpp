// A player for tests: StreamingClient PROPERTIES. Connects to the sound server with these
// properties, in SPA's JSON, and plays silence. On SIGUSR1 it drops its stream, on SIGUSR2 it makes
// a new one; on SIGHUP it says that the stream belongs to a group of filters.
#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>
#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>

namespace {

struct StreamDeleter {
    void operator()(pw_stream* stream) const noexcept { pw_stream_destroy(stream); }
};

class Player {
  public:
    explicit Player(pw_core* core) : core_(core) { play(); }

    void pause() { stream_.reset(); }

    void play() {
        stream_.reset(pw_stream_new(core_, "silence",
                                    pw_properties_new(PW_KEY_NODE_AUTOCONNECT, "true", nullptr)));
        std::array<std::byte, 1024> space;
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, space.data(), space.size());
        spa_audio_info_raw format{};
        format.format = SPA_AUDIO_FORMAT_F32;
        format.rate = 48000;
        format.channels = 1;
        format.position[0] = SPA_AUDIO_CHANNEL_MONO;
        const spa_pod* parameter =
            spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
        pw_stream_connect(stream_.get(), PW_DIRECTION_OUTPUT, PW_ID_ANY, PW_STREAM_FLAG_AUTOCONNECT,
                          &parameter, 1);
    }

    void joinFilters() {
        const spa_dict_item item{PW_KEY_NODE_LINK_GROUP, "filters"};
        const spa_dict dictionary{0, 1, &item};
        pw_stream_update_properties(stream_.get(), &dictionary);
    }

  private:
    pw_core* const core_;
    std::unique_ptr<pw_stream, StreamDeleter> stream_;
};

constexpr std::array<int, 3> signals{SIGUSR1, SIGUSR2, SIGHUP};

/// The loop takes the signals; no thread that the library starts may get them instead.
void blockSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : signals)
        sigaddset(&set, number);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

void onSignal(void* data, int number) {
    auto& player = *static_cast<Player*>(data);
    if (number == SIGUSR1)
        player.pause();
    else if (number == SIGUSR2)
        player.play();
    else
        player.joinFilters();
}

} // namespace

int main(int argc, char** argv) {
    blockSignals();
    pw_init(&argc, &argv);
    pw_main_loop* const loop = pw_main_loop_new(nullptr);
    pw_context* const context = pw_context_new(pw_main_loop_get_loop(loop), nullptr, 0);
    pw_properties* const properties = pw_properties_new(nullptr, nullptr);
    if (argc > 1)
        pw_properties_update_string(properties, argv[1], std::strlen(argv[1]));
    pw_core* const core = pw_context_connect(context, properties, 0);
    if (core == nullptr) {
        std::perror("no sound server");
        return 1;
    }
    Player player(core);
    for (const int number : signals)
        pw_loop_add_signal(pw_main_loop_get_loop(loop), number, &onSignal, &player);
    return pw_main_loop_run(loop);
}
