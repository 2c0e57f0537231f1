#include "plugin/server/AudioClient.h"

#include "platform/base/SystemLog.h"
#include "plugin/server/ClientClaims.h"

#include <utility>

const pw_client_events AudioClient::clientEvents = [] {
    pw_client_events events{};
    events.version = PW_VERSION_CLIENT_EVENTS;
    events.info = [](void* data, const pw_client_info* info) {
        static_cast<AudioClient*>(data)->informed(*info);
    };
    return events;
}();

AudioClient::AudioClient(pw_registry& registry, std::uint32_t id, std::uint64_t appeared,
                         Listener& listener)
    : id_(id)
    , listener_(listener)
    , client_(static_cast<pw_client*>(
          pw_registry_bind(&registry, id, PW_TYPE_INTERFACE_Client, PW_VERSION_CLIENT, 0))) {
    known_.appeared = appeared;
    if (client_ == nullptr) {
        platform::systemLog(platform::LogPriority::error, "Couldn't watch client %u", id);
        return;
    }
    pw_client_add_listener(client_.get(), hook_.get(), &clientEvents, this);
}

void AudioClient::describeTo(StreamEvidence& evidence) const {
    evidence.client = known_.client;
    evidence.peer = known_.peer;
    evidence.user = known_.user;
    evidence.appeared = known_.appeared;
}

void AudioClient::informed(const pw_client_info& info) {
    if ((info.change_mask & PW_CLIENT_CHANGE_MASK_PROPS) == 0 || info.props == nullptr)
        return;
    StreamEvidence known;
    known.client = claimsIn(*info.props);
    known.peer = textIn(*info.props, PW_KEY_SEC_PID);
    known.user = textIn(*info.props, PW_KEY_SEC_UID);
    known.appeared = known_.appeared;
    if (std::exchange(described_, true) && known == known_)
        return;
    known_ = std::move(known);
    listener_.clientDescribed(*this);
}
