#include "plugin/effects/RouteSettings.h"

#include "platform/base/SystemLog.h"

#include <pipewire/extensions/metadata.h>
#include <string_view>
#include <utility>

namespace {

constexpr const char* notifications = "restore.stream.Output/Audio.media.role:Notification";
constexpr std::uint32_t allStreams = 0;

} // namespace

const pw_metadata_events RouteSettings::events = [] {
    pw_metadata_events result{};
    result.version = PW_VERSION_METADATA_EVENTS;
    result.property = [](void* data, std::uint32_t subject, const char* key, const char*,
                         const char* value) {
        static_cast<RouteSettings*>(data)->changed(subject, key, value);
        return 0;
    };
    return result;
}();

RouteSettings::RouteSettings(pw_registry& registry, std::uint32_t id, Told told)
    : id_(id)
    , told_(std::move(told))
    , metadata_(static_cast<pw_metadata*>(
          pw_registry_bind(&registry, id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0))) {
    if (metadata_ == nullptr) {
        platform::systemLog(platform::LogPriority::error,
                            "Couldn't watch the settings of the session manager");
        return;
    }
    pw_metadata_add_listener(metadata_.get(), hook_.get(), &events, this);
}

void RouteSettings::set(const std::string& value) {
    if (metadata_ != nullptr)
        pw_metadata_set_property(metadata_.get(), allStreams, notifications, "Spa:String:JSON",
                                 value.c_str());
}

void RouteSettings::changed(std::uint32_t subject, const char* key, const char* value) {
    // Without a key all entries of the subject are removed.
    if (subject != allStreams || (key != nullptr && std::string_view(key) != notifications))
        return;
    told_(key != nullptr && value != nullptr ? std::optional<std::string>(value) : std::nullopt);
}
