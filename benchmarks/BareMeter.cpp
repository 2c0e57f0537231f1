#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>
#include <string>
#include <string_view>
#include <utility>

// A meter as bare as one can be, to measure ours against: for each program that plays a capture
// stream, mono and 25 samples a second, as mixers have them; nobody sees the peaks. Prints how many
// streams are measured whenever that changes. Ends when it is told to.
namespace {

constexpr std::uint32_t levelsPerSecond = 25;

/// How many streams are measured.
class Count {
  public:
    void change(int by) {
        measured_ += by;
        std::printf("measures %d\n", measured_);
        std::fflush(stdout);
    }

  private:
    int measured_ = 0;
};

/// The capture stream of one program.
class Meter {
  public:
    Meter(pw_core* core, Count& count, const char* serial) : count_(count) {
        const std::string rate = std::to_string(levelsPerSecond);
        pw_properties* const properties = pw_properties_new(
            PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Capture", PW_KEY_MEDIA_NAME,
            "Peak detect", PW_KEY_NODE_NAME, "bare-meter", PW_KEY_TARGET_OBJECT, serial,
            PW_KEY_STREAM_MONITOR, "true", PW_KEY_NODE_DONT_RECONNECT, "true", nullptr);
        stream_ = pw_stream_new(core, "Peak detect", properties);
        pw_stream_add_listener(stream_, &hook_, &events, this);

        std::array<std::uint8_t, 1024> space{};
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, space.data(), space.size());
        spa_audio_info_raw format{};
        format.format = SPA_AUDIO_FORMAT_F32;
        format.rate = levelsPerSecond;
        format.channels = 1;
        format.position[0] = SPA_AUDIO_CHANNEL_MONO;
        const spa_pod* parameter =
            spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
        constexpr auto flags =
            static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS);
        pw_stream_connect(stream_, PW_DIRECTION_INPUT, PW_ID_ANY, flags, &parameter, 1);
    }
    ~Meter() {
        if (heard_)
            count_.change(-1);
        pw_stream_destroy(stream_);
    }
    Meter(const Meter&) = delete;
    Meter& operator=(const Meter&) = delete;

  private:
    void process() {
        pw_buffer* const taken = pw_stream_dequeue_buffer(stream_);
        if (taken == nullptr)
            return;
        const spa_data& data = taken->buffer->datas[0];
        const auto* const samples = static_cast<const float*>(data.data);
        float peak = 0.0F;
        for (std::uint32_t i = 0; samples != nullptr && i < data.chunk->size / sizeof(float); ++i)
            peak = std::max(peak, std::fabs(samples[i]));
        peak_ = peak;
        pw_stream_queue_buffer(stream_, taken);
        if (!std::exchange(heard_, true))
            count_.change(1);
    }

    static const pw_stream_events events;

    Count& count_;
    pw_stream* stream_ = nullptr;
    spa_hook hook_{};
    volatile float peak_ = 0.0F; // so that the work cannot be left out
    bool heard_ = false;
};

const pw_stream_events Meter::events = [] {
    pw_stream_events each{};
    each.version = PW_VERSION_STREAM_EVENTS;
    each.process = [](void* data) { static_cast<Meter*>(data)->process(); };
    return each;
}();

struct Program {
    pw_core* core = nullptr;
    Count count;
    std::map<std::uint32_t, std::unique_ptr<Meter>> meters; // by node
};

void added(Program& program, std::uint32_t id, const char* type, const spa_dict* properties) {
    if (properties == nullptr || std::string_view(type) != PW_TYPE_INTERFACE_Node)
        return;
    const char* const mediaClass = spa_dict_lookup(properties, PW_KEY_MEDIA_CLASS);
    const char* const serial = spa_dict_lookup(properties, PW_KEY_OBJECT_SERIAL);
    if (mediaClass != nullptr && serial != nullptr &&
        std::string_view(mediaClass) == "Stream/Output/Audio")
        program.meters[id] = std::make_unique<Meter>(program.core, program.count, serial);
}

} // namespace

int main(int argc, char** argv) {
    pw_init(&argc, &argv);
    pw_main_loop* const loop = pw_main_loop_new(nullptr);
    const auto quit = [](void* data, int) { pw_main_loop_quit(static_cast<pw_main_loop*>(data)); };
    pw_loop_add_signal(pw_main_loop_get_loop(loop), SIGTERM, quit, loop);
    pw_context* const context =
        pw_context_new(pw_main_loop_get_loop(loop),
                       pw_properties_new(PW_KEY_CONFIG_NAME, "client-rt.conf", nullptr), 0);
    Program program;
    program.core = pw_context_connect(context, nullptr, 0);
    if (program.core == nullptr) {
        std::fprintf(stderr, "no sound server\n");
        return 1;
    }
    pw_registry_events events{};
    events.version = PW_VERSION_REGISTRY_EVENTS;
    events.global = [](void* data, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                       const spa_dict* properties) {
        added(*static_cast<Program*>(data), id, type, properties);
    };
    events.global_remove = [](void* data, std::uint32_t id) {
        static_cast<Program*>(data)->meters.erase(id);
    };
    pw_registry* const registry = pw_core_get_registry(program.core, PW_VERSION_REGISTRY, 0);
    spa_hook hook{};
    pw_registry_add_listener(registry, &hook, &events, &program);
    pw_main_loop_run(loop);

    program.meters.clear();
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry));
    pw_core_disconnect(program.core);
    pw_context_destroy(context);
    pw_main_loop_destroy(loop);
    pw_deinit();
    return 0;
}
