#include "plugin/levels/MeterLink.h"

#include <string>

const pw_proxy_events MeterLink::proxyEvents = [] {
    pw_proxy_events events{};
    events.version = PW_VERSION_PROXY_EVENTS;
    events.bound = [](void* data, std::uint32_t) {
        MeterLink& link = *static_cast<MeterLink*>(data);
        link.made_ = true;
        link.changed_();
    };
    events.removed = [](void* data) { static_cast<MeterLink*>(data)->lost(); };
    events.error = [](void* data, int, int, const char*) { static_cast<MeterLink*>(data)->lost(); };
    return events;
}();

MeterLink::MeterLink(pw_core& core, const Ends& ends, std::function<void()> changed)
    : changed_(std::move(changed)) {
    pw_properties* const properties =
        pw_properties_new(PW_KEY_LINK_PASSIVE, "true", PW_KEY_OBJECT_LINGER, "false", nullptr);
    pw_properties_setf(properties, PW_KEY_LINK_OUTPUT_NODE, "%u", ends.outputNode);
    pw_properties_setf(properties, PW_KEY_LINK_OUTPUT_PORT, "%u", ends.outputPort);
    pw_properties_setf(properties, PW_KEY_LINK_INPUT_NODE, "%u", ends.inputNode);
    pw_properties_setf(properties, PW_KEY_LINK_INPUT_PORT, "%u", ends.inputPort);
    proxy_.reset(static_cast<pw_proxy*>(pw_core_create_object(
        &core, "link-factory", PW_TYPE_INTERFACE_Link, PW_VERSION_LINK, &properties->dict, 0)));
    pw_properties_free(properties);
    if (proxy_ != nullptr)
        pw_proxy_add_listener(proxy_.get(), hook_.get(), &proxyEvents, this);
    else
        lost_ = true;
}

void MeterLink::lost() {
    lost_ = true;
    changed_();
}
