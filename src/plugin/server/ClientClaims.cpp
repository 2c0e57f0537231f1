#include "plugin/server/ClientClaims.h"

#include <charconv>
#include <pipewire/keys.h>

std::string textIn(const spa_dict& properties, const char* key) {
    const char* const text = spa_dict_lookup(&properties, key);
    return text != nullptr ? text : "";
}

std::uint64_t serialIn(const spa_dict* properties) {
    const std::string text = properties != nullptr ? textIn(*properties, PW_KEY_OBJECT_SERIAL) : "";
    std::uint64_t serial = 0;
    std::from_chars(text.data(), text.data() + text.size(), serial);
    return serial;
}

StreamClaims claimsIn(const spa_dict& properties) {
    return {.process = textIn(properties, PW_KEY_APP_PROCESS_ID),
            .binary = textIn(properties, PW_KEY_APP_PROCESS_BINARY),
            .name = textIn(properties, PW_KEY_APP_NAME),
            .id = textIn(properties, PW_KEY_APP_ID),
            .icon = textIn(properties, PW_KEY_APP_ICON_NAME),
            .host = textIn(properties, PW_KEY_APP_PROCESS_HOST),
            .machine = textIn(properties, PW_KEY_APP_PROCESS_MACHINE_ID),
            .api = textIn(properties, PW_KEY_CLIENT_API),
            .serverType = textIn(properties, "pulse.server.type"),
            .application = textIn(properties, "pipewire.access.portal.app_id")};
}
