#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <pipewire/filter.h>
#include <pipewire/pipewire.h>
#include <spa/param/audio/dsd-utils.h>
#include <spa/param/audio/format-utils.h>
#include <spa/param/audio/iec958-utils.h>
#include <string_view>

// A program whose stream has no settable volume: OddPlayer filter|iec958|dsd. On SIGUSR1 it makes
// another one, which has. It says "ready" when it can take the signal.
namespace {

struct Player {
    pw_main_loop* loop;
    pw_core* core;
};

pw_properties* propertiesOf(const char* name) {
    return pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Playback",
                             PW_KEY_MEDIA_CLASS, "Stream/Output/Audio", PW_KEY_NODE_NAME, name,
                             nullptr);
}

void makeFilter(const Player& player) {
    pw_filter* const filter = pw_filter_new(player.core, "filter", propertiesOf("filter"));
    pw_filter_add_port(filter, PW_DIRECTION_OUTPUT, PW_FILTER_PORT_FLAG_NONE, sizeof(int),
                       pw_properties_new(PW_KEY_FORMAT_DSP, "32 bit float mono audio",
                                         PW_KEY_PORT_NAME, "output", nullptr),
                       nullptr, 0);
    pw_filter_connect(filter, PW_FILTER_FLAG_NONE, nullptr, 0);
}

const spa_pod* formatOf(std::string_view kind, spa_pod_builder& builder) {
    if (kind == "iec958") {
        spa_audio_info_iec958 format{};
        format.codec = SPA_AUDIO_IEC958_CODEC_AC3;
        format.rate = 48000;
        return spa_format_audio_iec958_build(&builder, SPA_PARAM_EnumFormat, &format);
    }
    if (kind == "dsd") {
        spa_audio_info_dsd format{};
        format.rate = 352800;
        format.channels = 2;
        format.interleave = 4;
        return spa_format_audio_dsd_build(&builder, SPA_PARAM_EnumFormat, &format);
    }
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32;
    format.rate = 48000;
    format.channels = 2;
    return spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
}

void makeStream(const Player& player, std::string_view kind) {
    pw_stream* const stream = pw_stream_new(player.core, "stream", propertiesOf("stream"));
    constexpr std::uint32_t size = 1024;
    std::array<std::byte, size> space; // NOLINT(cppcoreguidelines-pro-type-member-init)
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, space.data(), size);
    const spa_pod* parameter = formatOf(kind, builder);
    pw_stream_connect(stream, PW_DIRECTION_OUTPUT, PW_ID_ANY, PW_STREAM_FLAG_AUTOCONNECT,
                      &parameter, 1);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    const std::string_view kind = argv[1];
    sigset_t signals{}; // in every thread, so that the loop gets it
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    pw_init(nullptr, nullptr);
    Player player{pw_main_loop_new(nullptr), nullptr};
    pw_loop* const loop = pw_main_loop_get_loop(player.loop);
    player.core = pw_context_connect(pw_context_new(loop, nullptr, 0), nullptr, 0);
    if (player.core == nullptr)
        return 1;
    if (kind == "filter")
        makeFilter(player);
    else
        makeStream(player, kind);
    pw_loop_add_signal(
        loop, SIGUSR1,
        [](void* data, int) { makeStream(*static_cast<const Player*>(data), "raw"); }, &player);
    std::puts("ready");
    std::fflush(stdout);
    return pw_main_loop_run(player.loop);
}
