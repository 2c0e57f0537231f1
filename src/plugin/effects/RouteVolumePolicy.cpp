#include "plugin/effects/RouteVolumePolicy.h"

#include <algorithm>
#include <utility>

namespace {

/// What differs between two values. Missing members stand for full volume, not muted.
WantedVolume differenceOf(const StreamSetting& before, const StreamSetting& after) {
    WantedVolume change;
    if (before.mute.value_or(false) != after.mute.value_or(false))
        change.muted = after.mute.value_or(false);
    if (!after.volumes.empty() && !areSameGains(before.volumes, after.volumes))
        change.gain = loudestOf(after.volumes);
    return change;
}

WantedVolume wantedOf(const StreamSetting& setting) {
    WantedVolume wanted;
    wanted.muted = setting.mute.value_or(false);
    if (!setting.volumes.empty())
        wanted.gain = loudestOf(setting.volumes);
    return wanted;
}

std::vector<std::string> stereo() {
    return {"FL", "FR"};
}

} // namespace

void RouteVolumePolicy::appeared() {
    gone();
    state_ = State::settling;
}

void RouteVolumePolicy::gone() {
    state_ = State::absent;
    known_.reset();
    writes_.clear();
}

std::optional<std::string> RouteVolumePolicy::asked(const WantedVolume& all, TimePoint now) {
    wasAsked_ = true;
    return state_ == State::settled ? write(all, now) : std::nullopt;
}

std::optional<std::string> RouteVolumePolicy::changedBeside(const WantedVolume& all,
                                                            TimePoint now) {
    return wasAsked_ && state_ == State::settled ? write(all, now) : std::nullopt;
}

std::optional<std::string> RouteVolumePolicy::settled(const WantedVolume& all, TimePoint now) {
    if (state_ != State::settling)
        return std::nullopt;
    state_ = State::settled;
    return wasAsked_ ? write(all, now) : std::nullopt;
}

/// While a write of ours is on its way, nobody can tell whether another's came before or after it,
/// since the server may leave out what has been replaced. So the newest that is told counts, also
/// when that is ours in the end.
WantedVolume RouteVolumePolicy::told(const std::optional<std::string>& value, TimePoint now) {
    forgetLostWrites(now);
    const auto before = writes_.empty() ? known_ : writes_.back().setting;
    remember(value ? parseStreamSetting(*value) : std::nullopt);
    if (!known_ || state_ != State::settled)
        return {};
    if (isEcho(*known_)) {
        const bool isLastWord = writes_.empty() && std::exchange(overtaken_, false);
        return isLastWord ? wantedOf(*known_) : WantedVolume{};
    }
    overtaken_ = !writes_.empty();
    return differenceOf(before.value_or(StreamSetting{}), *known_);
}

void RouteVolumePolicy::remember(const std::optional<StreamSetting>& setting) {
    known_ = setting;
    if (known_ && loudestOf(known_->volumes) > 0.0F)
        balance_ = known_->volumes;
}

void RouteVolumePolicy::forgetLostWrites(TimePoint now) {
    std::erase_if(writes_, [now](const Write& each) { return now - each.time > longestEcho; });
}

bool RouteVolumePolicy::isEcho(const StreamSetting& setting) {
    const auto write = std::find_if(writes_.begin(), writes_.end(), [&setting](const Write& each) {
        return haveSameEffect(each.setting, setting);
    });
    if (write == writes_.end())
        return false;
    writes_.erase(writes_.begin(), std::next(write));
    return true;
}

/// Always whole: sliders elsewhere show a value without a volume as silent.
StreamSetting RouteVolumePolicy::settingFor(const WantedVolume& all) const {
    StreamSetting target = known_.value_or(StreamSetting{});
    target.mute = all.muted.value_or(target.mute.value_or(false));
    if (target.volumes.empty())
        target.volumes.assign(stereo().size(), 1.0F);
    const std::size_t channels = target.volumes.size();
    if (all.gain)
        target.volumes = balancedVolumes(
            balance_.size() == channels ? balance_ : std::vector<float>{}, channels, *all.gain);
    if (target.channels.size() != channels)
        target.channels = channels == stereo().size() ? stereo() : std::vector<std::string>{};
    return target;
}

std::optional<std::string> RouteVolumePolicy::write(const WantedVolume& all, TimePoint now) {
    forgetLostWrites(now);
    StreamSetting wanted = settingFor(all);
    const bool isThere = writes_.empty() ? known_ && haveSameEffect(*known_, wanted)
                                         : haveSameEffect(writes_.back().setting, wanted);
    if (isThere)
        return std::nullopt;
    std::string text = formatStreamSetting(wanted);
    writes_.push_back({std::move(wanted), now});
    overtaken_ = false;
    return text;
}
