#include "plugin/server/AudioStream.h"

#include "platform/base/SystemLog.h"
#include "platform/loop/Timer.h"
#include "plugin/server/AudioServer.h"
#include "plugin/server/ClientClaims.h"
#include "plugin/server/NodeWriter.h"
#include "plugin/server/StreamParam.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

using platform::MonotonicClock;

namespace {

// What was measured within one cycle of a change of the gain belongs to the old or the new one; the
// longest cycle usual is 8192 samples at 48 kHz. Of a stream that does not run nothing is measured.
constexpr std::chrono::milliseconds settlingTime{200};

// A stream is told of in parts, and changes in parts.
constexpr std::chrono::milliseconds tellingTime{100};

} // namespace

const pw_node_events AudioStream::nodeEvents = [] {
    pw_node_events events{};
    events.version = PW_VERSION_NODE_EVENTS;
    events.info = [](void* data, const pw_node_info* info) {
        static_cast<AudioStream*>(data)->informed(*info);
    };
    events.param = [](void* data, int, std::uint32_t id, std::uint32_t index, std::uint32_t,
                      const spa_pod* param) {
        if (id == SPA_PARAM_Props)
            static_cast<AudioStream*>(data)->propsChanged(param);
        else if (id == SPA_PARAM_EnumFormat)
            static_cast<AudioStream*>(data)->formatTold(index, param);
    };
    return events;
}();

AudioStream::AudioStream(platform::RunLoop& loop, const AudioServer& server, NodeWriter& writer,
                         std::uint32_t id, Origin origin, Listener& listener)
    : id_(id)
    , origin_(origin)
    , writer_(writer)
    , listener_(listener)
    , review_(std::make_unique<platform::Timer>(loop,
                                                [this] { listener_.streamObstacleChanged(*this); }))
    , keeper_(MonotonicClock::now())
    , wake_(std::make_unique<platform::Timer>(
          loop, [this] { write(keeper_.wake(MonotonicClock::now())); }))
    , node_(static_cast<pw_node*>(
          pw_registry_bind(server.registry(), id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0))) {
    if (origin == Origin::existed)
        keeper_.foundThere();
    if (node_ == nullptr) {
        platform::systemLog(platform::LogPriority::error, "Couldn't watch stream %u", id);
        return;
    }
    pw_node_add_listener(node_.get(), hook_.get(), &nodeEvents, this);
    std::array<std::uint32_t, 2> parameters{SPA_PARAM_Props, SPA_PARAM_EnumFormat};
    pw_node_subscribe_params(node_.get(), parameters.data(), parameters.size());
}

AudioStream::~AudioStream() {
    writer_.forget(id_);
}

void AudioStream::describeTo(StreamEvidence& evidence) const {
    evidence.node = claims_;
}

void AudioStream::informed(const pw_node_info& info) {
    const bool running = info.state == PW_NODE_STATE_RUNNING;
    if (!described_ && running && origin_ == Origin::existed)
        keeper_.heardAlready();
    // The server suspends a node that has had no link yet, and tells so after what was written to
    // the node before the link was made.
    const bool linked = info.state >= PW_NODE_STATE_IDLE;
    if (!std::exchange(linked_, linked) && linked)
        keeper_.linked();
    noteParameters(info);
    const bool stateChanges = std::exchange(running_, running) != running;
    if (stateChanges)
        write(keeper_.setRunning(running));
    if ((info.change_mask & PW_NODE_CHANGE_MASK_PROPS) != 0 && info.props != nullptr) {
        StreamClaims claims = claimsIn(*info.props);
        const bool internal = spa_dict_lookup(info.props, PW_KEY_NODE_LINK_GROUP) != nullptr;
        std::string role = textIn(*info.props, PW_KEY_MEDIA_ROLE);
        if (!described_ || claims != claims_ || internal != internal_ || role != role_) {
            claims_ = std::move(claims);
            role_ = std::move(role);
            internal_ = internal;
            described_ = true;
            listener_.streamDescribed(*this);
        }
    }
    if (stateChanges)
        listener_.streamStateChanged(*this);
}

void AudioStream::propsChanged(const spa_pod* param) {
    StreamProps props = keeper_.props().value_or(StreamProps{});
    readStreamProps(param, props);
    noteGains(props);
    if (const auto locked = readVolumeLock(param)) {
        obstacle_.lockTold(*locked);
        review_->start(tellingTime);
    }
    write(keeper_.propsArrived(props, MonotonicClock::now()));
}

void AudioStream::noteParameters(const pw_node_info& info) {
    if ((info.change_mask & PW_NODE_CHANGE_MASK_PARAMS) == 0 || info.n_params == 0)
        return;
    obstacle_.propsListed(
        std::any_of(info.params, info.params + info.n_params, [](const spa_param_info& each) {
            return each.id == SPA_PARAM_Props && (each.flags & SPA_PARAM_INFO_READ) != 0;
        }));
    review_->start(tellingTime);
}

void AudioStream::formatTold(std::uint32_t index, const spa_pod* param) {
    obstacle_.formatTold(index, isRawFormat(param));
    review_->start(tellingTime);
}

void AudioStream::noteGains(const StreamProps& props) {
    const auto& before = keeper_.props();
    if (running_ && before && !haveSameGains(*before, props))
        gainSettled_ = MonotonicClock::now() + settlingTime;
    if (!isSameGain(props.volume, before.value_or(StreamProps{}).volume))
        platform::systemLog(platform::LogPriority::info,
                            "Stream %u has a hidden volume of %.4f besides the one mixers show",
                            id_, static_cast<double>(props.volume));
}

void AudioStream::adopt(const WantedVolume& all) {
    write(keeper_.adopt(all, MonotonicClock::now()));
}

void AudioStream::want(const WantedVolume& change, WantReason reason) {
    write(keeper_.want(change, MonotonicClock::now(), reason));
}

void AudioStream::uphold() {
    keeper_.uphold(MonotonicClock::now());
}

void AudioStream::finish() {
    write(keeper_.finish());
}

void AudioStream::write(const VolumeWrite& write) {
    if (!write.isEmpty())
        writer_.write(id_, write);
    if (const auto due = keeper_.due())
        wake_->startAt(*due);
    else
        wake_->stop();
    if (const WantedVolume found = keeper_.takeFound(); !found.isEmpty())
        listener_.streamFound(*this, found);
    if (const WantedVolume change = keeper_.takeChangesElsewhere(); !change.isEmpty())
        listener_.streamChangedElsewhere(*this, change);
}

float AudioStream::level(std::span<const ChannelPeak> measured) {
    const auto& props = keeper_.props();
    if (!running_ || !props)
        return lastLevel_ = 0.0F;
    if (isSilenced(*props))
        return lastLevel_ = kSilencedStreamLevel;
    if (MonotonicClock::now() >= gainSettled_)
        lastLevel_ = levelBeforeGain(measured, *props);
    return lastLevel_ * keeper_.ownVolume().gain;
}
