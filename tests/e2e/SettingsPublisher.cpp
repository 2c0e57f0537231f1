#include "plugin/server/PipeWireHandles.h"

#include <cstdio>
#include <pipewire/extensions/metadata.h>
#include <pipewire/impl.h>

// A program that publishes settings as a session manager does, under the name that is its argument,
// until it is killed. Says "ready" when they are there, and then each value that is set in them.
int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    pw_init(&argc, &argv);
    pw_main_loop* const loop = pw_main_loop_new(nullptr);
    pw_context* const context = pw_context_new(pw_main_loop_get_loop(loop), nullptr, 0);
    pw_core* const core = pw_context_connect(context, nullptr, 0);
    if (core == nullptr)
        return 1;
    pw_impl_metadata* const metadata = pw_context_create_metadata(context, argv[1], nullptr, 0);
    static const pw_impl_metadata_events events = [] {
        pw_impl_metadata_events made{};
        made.version = PW_VERSION_IMPL_METADATA_EVENTS;
        made.property = [](void*, std::uint32_t, const char*, const char*, const char* value) {
            std::puts(value != nullptr ? value : "");
            std::fflush(stdout);
            return 0;
        };
        return made;
    }();
    ListenerHook metadataHook;
    pw_impl_metadata_add_listener(metadata, metadataHook.get(), &events, nullptr);
    const spa_dict_item name = SPA_DICT_ITEM_INIT(PW_KEY_METADATA_NAME, argv[1]);
    const spa_dict properties = SPA_DICT_INIT(&name, 1);
    pw_core_export(core, PW_TYPE_INTERFACE_Metadata, &properties,
                   pw_impl_metadata_get_implementation(metadata), 0);

    static const pw_core_events answers = [] {
        pw_core_events made{};
        made.version = PW_VERSION_CORE_EVENTS;
        made.done = [](void*, std::uint32_t, int) {
            std::puts("ready");
            std::fflush(stdout);
        };
        return made;
    }();
    ListenerHook coreHook;
    pw_core_add_listener(core, coreHook.get(), &answers, nullptr);
    pw_core_sync(core, PW_ID_CORE, 0);
    return pw_main_loop_run(loop);
}
