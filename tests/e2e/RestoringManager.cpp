#include "plugin/server/PipeWireHandles.h"

#include <pipewire/extensions/metadata.h>
#include <spa/param/audio/format-utils.h>
#include <spa/param/props.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

// A session manager that has just been started: it publishes its settings, and then gives all
// programs' streams the volume that is its argument (linear), as if it remembered that for them.
// Ends when the server has heard it all.
namespace {

class Manager {
  public:
    Manager(pw_core* core, float gain)
        : gain_(gain), registry_(pw_core_get_registry(core, PW_VERSION_REGISTRY, 0)) {
        pw_registry_add_listener(registry_.get(), hook_.get(), &registryEvents, this);
        const spa_dict_item name = SPA_DICT_ITEM_INIT(PW_KEY_METADATA_NAME, "default");
        const spa_dict properties = SPA_DICT_INIT(&name, 1);
        metadata_.reset(static_cast<pw_proxy*>(pw_core_create_object(
            core, "metadata", PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, &properties, 0)));
    }

  private:
    void found(std::uint32_t id, const char* type, const spa_dict* properties) {
        const char* const kind =
            properties != nullptr ? spa_dict_lookup(properties, PW_KEY_MEDIA_CLASS) : nullptr;
        if (std::strcmp(type, PW_TYPE_INTERFACE_Node) != 0 || kind == nullptr ||
            std::strcmp(kind, "Stream/Output/Audio") != 0)
            return;
        auto& node = nodes_.emplace_back(static_cast<pw_node*>(
            pw_registry_bind(registry_.get(), id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0)));
        std::uint8_t space[256];
        spa_pod_builder builder = SPA_POD_BUILDER_INIT(space, sizeof space);
        const float volumes[]{gain_, gain_};
        const auto* const param = static_cast<const spa_pod*>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_Props, SPA_PARAM_Props, SPA_PROP_channelVolumes,
            SPA_POD_Array(sizeof(float), SPA_TYPE_Float, 2, volumes)));
        pw_node_set_param(node.get(), SPA_PARAM_Props, 0, param);
    }

    static const pw_registry_events registryEvents;

    const float gain_;
    ProxyHandle<pw_proxy> metadata_;
    std::vector<ProxyHandle<pw_node>> nodes_;
    ProxyHandle<pw_registry> registry_;
    ListenerHook hook_;
};

const pw_registry_events Manager::registryEvents = [] {
    pw_registry_events events{};
    events.version = PW_VERSION_REGISTRY_EVENTS;
    events.global = [](void* data, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                       const spa_dict* properties) {
        static_cast<Manager*>(data)->found(id, type, properties);
    };
    return events;
}();

/// Serves the loop until the server has answered all that it was asked before.
void settle(pw_main_loop* loop, pw_core* core) {
    struct Wait {
        pw_main_loop* loop;
        int sequence;
    } wait{loop, 0};
    static const pw_core_events events = [] {
        pw_core_events made{};
        made.version = PW_VERSION_CORE_EVENTS;
        made.done = [](void* data, std::uint32_t, int sequence) {
            const auto& waiting = *static_cast<Wait*>(data);
            if (sequence == waiting.sequence)
                pw_main_loop_quit(waiting.loop);
        };
        return made;
    }();
    ListenerHook hook;
    pw_core_add_listener(core, hook.get(), &events, &wait);
    wait.sequence = pw_core_sync(core, PW_ID_CORE, 0);
    pw_main_loop_run(loop);
}

} // namespace

int main(int argc, char** argv) {
    pw_init(&argc, &argv);
    pw_main_loop* const loop = pw_main_loop_new(nullptr);
    pw_context* const context = pw_context_new(pw_main_loop_get_loop(loop), nullptr, 0);
    pw_core* const core = pw_context_connect(context, nullptr, 0);
    if (core == nullptr || argc != 2)
        return 1;
    {
        const Manager manager(core, std::strtof(argv[1], nullptr));
        settle(loop, core); // the list of objects is there
        settle(loop, core); // the volumes are set
    }
    pw_context_destroy(context);
    pw_main_loop_destroy(loop);
    pw_deinit();
}
