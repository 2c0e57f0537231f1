#include "plugin/server/StreamParam.h"

#include <array>
#include <cstdint>
#include <pipewire/node.h>
#include <spa/param/audio/raw.h>
#include <spa/param/format-utils.h>
#include <spa/param/props.h>
#include <spa/pod/builder.h>
#include <spa/pod/iter.h>
#include <string_view>

void readStreamProps(const spa_pod* param, StreamProps& props) {
    if (param == nullptr || spa_pod_is_object_type(param, SPA_TYPE_OBJECT_Props) == 0)
        return;
    const auto* const object = reinterpret_cast<const spa_pod_object*>(param);
    for (const spa_pod_prop* prop = spa_pod_prop_first(&object->body);
         spa_pod_prop_is_inside(&object->body, object->pod.size, prop);
         prop = spa_pod_prop_next(prop)) {
        switch (prop->key) {
        case SPA_PROP_volume:
            spa_pod_get_float(&prop->value, &props.volume);
            break;
        case SPA_PROP_mute:
            spa_pod_get_bool(&prop->value, &props.mute);
            break;
        case SPA_PROP_channelVolumes: {
            std::array<float, SPA_AUDIO_MAX_CHANNELS> values{};
            const std::uint32_t count =
                spa_pod_copy_array(&prop->value, SPA_TYPE_Float, values.data(), values.size());
            props.channelVolumes.assign(values.begin(), values.begin() + count);
            break;
        }
        default:
            break;
        }
    }
}

std::optional<bool> readVolumeLock(const spa_pod* param) {
    if (param == nullptr || spa_pod_is_object_type(param, SPA_TYPE_OBJECT_Props) == 0)
        return std::nullopt;
    const spa_pod_prop* const params = spa_pod_find_prop(param, nullptr, SPA_PROP_params);
    if (params == nullptr || spa_pod_is_struct(&params->value) == 0)
        return std::nullopt;
    // Names and values in turn.
    const auto* const list = reinterpret_cast<const spa_pod_struct*>(&params->value);
    const auto* const first = static_cast<const spa_pod*>(SPA_POD_BODY_CONST(list));
    bool isLock = false;
    bool isName = true;
    for (const spa_pod* item = first; spa_pod_is_inside(first, list->pod.size, item);
         item = static_cast<const spa_pod*>(spa_pod_next(item)), isName = !isName) {
        const char* name = nullptr;
        bool locked = false;
        if (isName)
            isLock = spa_pod_get_string(item, &name) >= 0 &&
                     std::string_view(name) == "channelmix.lock-volumes";
        else if (isLock && spa_pod_get_bool(item, &locked) >= 0)
            return locked;
    }
    return std::nullopt;
}

bool isRawFormat(const spa_pod* param) {
    std::uint32_t type = SPA_MEDIA_TYPE_unknown;
    std::uint32_t subtype = SPA_MEDIA_SUBTYPE_unknown;
    return spa_format_parse(param, &type, &subtype) < 0 || subtype == SPA_MEDIA_SUBTYPE_raw;
}

void writeStreamProps(pw_node* node, const VolumeWrite& write) {
    std::array<std::byte, 1024> space; // 64 channels take less than 400 bytes
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, space.data(), space.size());
    spa_pod_frame frame{};
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_Props, SPA_PARAM_Props);
    if (write.channelVolumes) {
        spa_pod_builder_prop(&builder, SPA_PROP_channelVolumes, 0);
        spa_pod_builder_array(&builder, sizeof(float), SPA_TYPE_Float,
                              static_cast<std::uint32_t>(write.channelVolumes->size()),
                              write.channelVolumes->data());
    }
    if (write.mute) {
        spa_pod_builder_prop(&builder, SPA_PROP_mute, 0);
        spa_pod_builder_bool(&builder, *write.mute);
    }
    const auto* const pod = static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &frame));
    pw_node_set_param(node, SPA_PARAM_Props, 0, pod);
}
