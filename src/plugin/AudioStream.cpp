#include "plugin/AudioStream.h"

#include "platform/SystemLog.h"
#include "plugin/AudioServer.h"
#include "plugin/StreamParam.h"

#include <algorithm>
#include <cmath>
#include <string_view>

using platform::MonotonicClock;

namespace {

// What was measured within one cycle of a change of the gain belongs to the old or the new one; the
// longest cycle usual is 8192 samples at 48 kHz.
constexpr std::chrono::milliseconds settlingTime{200};

std::string textIn(const spa_dict& properties, const char* key) {
    const char* const text = spa_dict_lookup(&properties, key);
    return text != nullptr ? text : "";
}

} // namespace

const pw_node_events AudioStream::nodeEvents = [] {
    pw_node_events events{};
    events.version = PW_VERSION_NODE_EVENTS;
    events.info = [](void* data, const pw_node_info* info) {
        static_cast<AudioStream*>(data)->informed(*info);
    };
    events.param = [](void* data, int, std::uint32_t id, std::uint32_t, std::uint32_t,
                      const spa_pod* param) {
        if (id == SPA_PARAM_Props)
            static_cast<AudioStream*>(data)->propsChanged(param);
    };
    return events;
}();

AudioStream::AudioStream(platform::RunLoop& loop, const AudioServer& server, std::uint32_t id,
                         Listener& listener)
    : id_(id)
    , listener_(listener)
    , hold_(MonotonicClock::now())
    , node_(static_cast<pw_node*>(
          pw_registry_bind(server.registry(), id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0)))
    , writer_(loop, server, id) {
    if (node_ == nullptr) {
        platform::systemLog(platform::LogPriority::error, "Couldn't watch stream %u", id);
        return;
    }
    pw_node_add_listener(node_.get(), hook_.get(), &nodeEvents, this);
    std::uint32_t props = SPA_PARAM_Props;
    pw_node_subscribe_params(node_.get(), &props, 1);
}

void AudioStream::describeTo(platform::StreamEvidence& evidence) const {
    evidence.nodeProcess = claims_.nodeProcess;
    evidence.nodeBinary = claims_.nodeBinary;
    evidence.nodeApi = claims_.nodeApi;
    if (!claims_.applicationName.empty())
        evidence.applicationName = claims_.applicationName;
}

void AudioStream::informed(const pw_node_info& info) {
    if ((info.change_mask & PW_NODE_CHANGE_MASK_PROPS) != 0 && info.props != nullptr) {
        platform::StreamEvidence claims;
        claims.nodeProcess = textIn(*info.props, PW_KEY_APP_PROCESS_ID);
        claims.nodeBinary = textIn(*info.props, PW_KEY_APP_PROCESS_BINARY);
        claims.nodeApi = textIn(*info.props, PW_KEY_CLIENT_API);
        claims.applicationName = textIn(*info.props, PW_KEY_APP_NAME);
        internal_ = spa_dict_lookup(info.props, PW_KEY_NODE_LINK_GROUP) != nullptr;
        if (!described_ || claims != claims_) {
            claims_ = std::move(claims);
            described_ = true;
            listener_.streamDescribed(*this);
        }
    }
    const bool running = info.state == PW_NODE_STATE_RUNNING;
    if (running != running_) {
        running_ = running;
        listener_.streamStateChanged(*this);
    }
}

void AudioStream::propsChanged(const spa_pod* param) {
    StreamProps props = props_.value_or(StreamProps{});
    readStreamProps(param, props);
    const bool first = !props_;
    takeOver(props);
    if (isInEffect(wanted_, props))
        return;
    if (first || hold_.takeWrite(MonotonicClock::now()))
        write(wanted_);
}

void AudioStream::takeOver(const StreamProps& props) {
    const auto now = MonotonicClock::now();
    if (props_ && !haveSameGains(*props_, props))
        gainSettled_ = now + settlingTime;
    const float unitTolerance = 1e-4F;
    if (std::fabs(props.volume - props_.value_or(StreamProps{}).volume) > unitTolerance)
        platform::systemLog(platform::LogPriority::info,
                            "Stream %u has a hidden volume of %.4f besides the one mixers show",
                            id_, static_cast<double>(props.volume));
    if (std::any_of(props.channelVolumes.begin(), props.channelVolumes.end(),
                    [](float volume) { return volume > 0.0F; }))
        balance_ = props.channelVolumes;
    props_ = props;
}

void AudioStream::adopt(const WantedVolume& all) {
    wanted_ = {};
    want(all);
}

void AudioStream::want(const WantedVolume& change) {
    wanted_.merge(change);
    if (props_)
        write(change);
}

void AudioStream::uphold() {
    hold_ = VolumeHold(MonotonicClock::now());
}

void AudioStream::write(const WantedVolume& change) {
    if (change.isEmpty())
        return;
    std::optional<std::vector<float>> volumes;
    if (change.percent) {
        const std::size_t channels = props_->channelVolumes.size();
        volumes = balancedVolumes(balance_.size() == channels ? balance_ : std::vector<float>{},
                                  channels, gainOfPercent(*change.percent));
    }
    if (pw_node* const node = writer_.node())
        writeStreamProps(node, volumes, change.muted);
}

float AudioStream::level(std::span<const ChannelPeak> measured) {
    if (!running_ || !props_) {
        lastLevel_ = 0.0F;
    } else if (isSilenced(*props_)) {
        lastLevel_ = kSilencedStreamLevel;
    } else if (MonotonicClock::now() >= gainSettled_) {
        lastLevel_ = levelBeforeGain(measured, *props_);
    } // else what was heard before still holds
    return lastLevel_;
}
