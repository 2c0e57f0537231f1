#include "plugin/server/PipeWireHandles.h"

#include <cstdio>
#include <cstdlib>
#include <pipewire/extensions/metadata.h>
#include <pipewire/impl.h>
#include <spa/param/props.h>
#include <spa/pod/builder.h>
#include <string_view>
#include <utility>
#include <vector>

// A program that does what session managers do: SettingsPublisher NAME [GAIN]. Publishes settings
// of that name until it is killed, and gives all programs' streams that there are the volume GAIN
// (linear), as if it remembered that for them. Says "ready" when the server has heard all that, and
// then each value that is set in the settings.
namespace {

void say(const char* text) {
    std::puts(text);
    std::fflush(stdout);
}

struct Manager {
    pw_core* core;
    float gain = 1;
    ProxyHandle<pw_registry> registry;
    std::vector<ProxyHandle<pw_node>> nodes;
    bool knowsStreams = false;

    void setVolume(std::uint32_t id) {
        auto& node = nodes.emplace_back(static_cast<pw_node*>(
            pw_registry_bind(registry.get(), id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0)));
        std::uint8_t space[256];
        spa_pod_builder builder = SPA_POD_BUILDER_INIT(space, sizeof space);
        const float volumes[]{gain, gain};
        const auto* const param = static_cast<const spa_pod*>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_Props, SPA_PARAM_Props, SPA_PROP_channelVolumes,
            SPA_POD_Array(sizeof(float), SPA_TYPE_Float, 2, volumes)));
        pw_node_set_param(node.get(), SPA_PARAM_Props, 0, param);
    }
};

const pw_impl_metadata_events metadataEvents = [] {
    pw_impl_metadata_events events{};
    events.version = PW_VERSION_IMPL_METADATA_EVENTS;
    events.property = [](void*, std::uint32_t, const char*, const char*, const char* value) {
        say(value != nullptr ? value : "");
        return 0;
    };
    return events;
}();

const pw_core_events coreEvents = [] {
    pw_core_events events{};
    events.version = PW_VERSION_CORE_EVENTS;
    events.done = [](void* data, std::uint32_t, int) {
        auto& manager = *static_cast<Manager*>(data);
        if (std::exchange(manager.knowsStreams, true))
            say("ready");
        else
            pw_core_sync(manager.core, PW_ID_CORE, 0);
    };
    return events;
}();

const pw_registry_events registryEvents = [] {
    pw_registry_events events{};
    events.version = PW_VERSION_REGISTRY_EVENTS;
    events.global = [](void* data, std::uint32_t id, std::uint32_t, const char*, std::uint32_t,
                       const spa_dict* properties) {
        const char* const kind =
            properties != nullptr ? spa_dict_lookup(properties, PW_KEY_MEDIA_CLASS) : nullptr;
        if (kind != nullptr && std::string_view(kind) == "Stream/Output/Audio")
            static_cast<Manager*>(data)->setVolume(id);
    };
    return events;
}();

} // namespace

int main(int argc, char** argv) {
    if (argc < 2)
        return 2;
    pw_init(nullptr, nullptr);
    pw_main_loop* const loop = pw_main_loop_new(nullptr);
    pw_context* const context = pw_context_new(pw_main_loop_get_loop(loop), nullptr, 0);
    pw_core* const core = pw_context_connect(context, nullptr, 0);
    if (core == nullptr)
        return 1;
    pw_impl_metadata* const metadata = pw_context_create_metadata(context, argv[1], nullptr, 0);
    ListenerHook metadataHook;
    pw_impl_metadata_add_listener(metadata, metadataHook.get(), &metadataEvents, nullptr);
    const spa_dict_item name = SPA_DICT_ITEM_INIT(PW_KEY_METADATA_NAME, argv[1]);
    const spa_dict properties = SPA_DICT_INIT(&name, 1);
    pw_core_export(core, PW_TYPE_INTERFACE_Metadata, &properties,
                   pw_impl_metadata_get_implementation(metadata), 0);

    Manager manager{core, 1, {}, {}};
    ListenerHook registryHook;
    if (argc > 2) {
        manager.gain = std::strtof(argv[2], nullptr);
        manager.registry.reset(pw_core_get_registry(core, PW_VERSION_REGISTRY, 0));
        pw_registry_add_listener(manager.registry.get(), registryHook.get(), &registryEvents,
                                 &manager);
    }
    ListenerHook coreHook;
    pw_core_add_listener(core, coreHook.get(), &coreEvents, &manager);
    pw_core_sync(core, PW_ID_CORE, 0);
    return pw_main_loop_run(loop);
}
