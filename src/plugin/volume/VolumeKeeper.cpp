#include "plugin/volume/VolumeKeeper.h"

#include <functional>

VolumeWrite VolumeKeeper::adopt(const WantedVolume& all, TimePoint now) {
    VolumeWrite write = finish();
    wanted_ = all;
    adopted_ = true;
    letGo_ = false;
    if (!props_)
        return write;
    VolumeWrite more = apply(now);
    if (!more.channelVolumes)
        more.channelVolumes = std::move(write.channelVolumes);
    return more;
}

VolumeWrite VolumeKeeper::want(const WantedVolume& change, TimePoint now) {
    wanted_.merge(change);
    return props_ ? bringAbout(change, now) : VolumeWrite{};
}

void VolumeKeeper::uphold(TimePoint now) noexcept {
    if (letGo_)
        return;
    hold_ = VolumeHold(now);
    heardAlready_ = false; // what was found is wanted by now
}

VolumeWrite VolumeKeeper::setRunning(bool running) {
    running_ = running;
    return running ? VolumeWrite{} : finish();
}

VolumeWrite VolumeKeeper::propsArrived(const StreamProps& props, TimePoint now) {
    const std::optional<StreamProps> before = std::exchange(props_, props);
    if (loudestOf(props.channelVolumes) > 0.0F)
        balance_ = props.channelVolumes;
    if (!before)
        return adopted_ ? apply(now) : VolumeWrite{};
    if (heardAlready_ || hold_.isOver(now))
        return changedElsewhere(*before);
    if (!isInEffect(wanted_, props))
        return hold_.takeWrite(now) ? bringAbout(wanted_, now) : VolumeWrite{};
    ownVolumes_.clear();
    ownMutes_.clear();
    return {};
}

VolumeWrite VolumeKeeper::step(TimePoint now) {
    return ramp_.isRunning() ? written({volumesAt(ramp_.step(now)), std::nullopt}) : VolumeWrite{};
}

VolumeWrite VolumeKeeper::finish() {
    if (!ramp_.isRunning())
        return {};
    ramp_.stop();
    return written({volumesAt(wanted_.gain.value()), std::nullopt});
}

/// Brings about all that is wanted.
VolumeWrite VolumeKeeper::apply(TimePoint now) {
    if (heardAlready_)
        return applyQuietly(now);
    return isInEffect(wanted_, *props_) ? VolumeWrite{} : bringAbout(wanted_, now);
}

/// Brings about what makes the stream quieter and takes the rest from what is in effect.
VolumeWrite VolumeKeeper::applyQuietly(TimePoint now) {
    const float gain = loudestOf(props_->channelVolumes);
    WantedVolume quieter;
    WantedVolume found;
    if (wanted_.gain && *wanted_.gain < gain && !isSameGain(*wanted_.gain, gain))
        quieter.gain = wanted_.gain;
    else if (!props_->channelVolumes.empty())
        found.gain = gain;
    if (wanted_.muted.value_or(false))
        quieter.muted = true;
    else
        found.muted = props_->mute;
    wanted_.merge(found);
    found_.merge(found);
    return bringAbout(quieter, now);
}

VolumeWrite VolumeKeeper::bringAbout(const WantedVolume& change, TimePoint now) {
    VolumeWrite write;
    if (needsRamp(change, now)) {
        if (change.gain)
            ramp_.aim(newestGain(), *change.gain, now);
        if (ramp_.isRunning() && ramp_.due() <= now)
            write.channelVolumes = volumesAt(ramp_.step(now));
    } else if (change.gain || ramp_.isRunning()) {
        ramp_.stop();
        write.channelVolumes = volumesAt(wanted_.gain.value());
    }
    write.mute = change.muted;
    return written(std::move(write));
}

/// Takes what is in effect now for a person's will, as far as it is not our own doing.
VolumeWrite VolumeKeeper::changedElsewhere(const StreamProps& before) {
    WantedVolume will;
    VolumeWrite write;
    const std::vector<float>& volumes = props_->channelVolumes;
    if (volumes.size() != before.channelVolumes.size()) {
        // The stream has another format; the server has made up volumes for it.
        ramp_.stop();
        ownVolumes_.clear();
        if (!letGo_ && wanted_.gain && !volumes.empty() &&
            !isSameGain(loudestOf(volumes), *wanted_.gain))
            write = written({volumesAt(*wanted_.gain), std::nullopt});
    } else if (!areSameGains(volumes, before.channelVolumes) &&
               !ownVolumes_.takeEcho(volumes, areSameGains)) {
        will.gain = loudestOf(volumes);
        const bool overtaken = ramp_.isRunning() && ownVolumes_.newest() != nullptr;
        ramp_.stop();
        ownVolumes_.clear();
        if (overtaken) // by a step on its way
            write = written({volumes, std::nullopt});
    }
    if (props_->mute != before.mute && !ownMutes_.takeEcho(props_->mute, std::equal_to<bool>())) {
        will.muted = props_->mute;
        ownMutes_.clear();
    }
    if (!will.isEmpty())
        addUntouched(will);
    wanted_.merge(will);
    elsewhere_.merge(will);
    return write;
}

/// Who changes one of volume and mute has seen the other, and has let it be.
void VolumeKeeper::addUntouched(WantedVolume& will) const {
    if (!will.gain && !wanted_.gain && !props_->channelVolumes.empty())
        will.gain = loudestOf(props_->channelVolumes);
    if (!will.muted && !wanted_.muted)
        will.muted = props_->mute;
}

bool VolumeKeeper::needsRamp(const WantedVolume& change, TimePoint now) const {
    return running_ && (heardAlready_ || hold_.isOver(now)) && !isMuted() &&
           !change.muted.value_or(false);
}

VolumeWrite VolumeKeeper::written(VolumeWrite write) {
    if (write.channelVolumes)
        ownVolumes_.add(*write.channelVolumes);
    if (write.mute)
        ownMutes_.add(*write.mute);
    return write;
}

std::vector<float> VolumeKeeper::volumesAt(float gain) const {
    const std::size_t channels = props_->channelVolumes.size();
    return balancedVolumes(balance_.size() == channels ? balance_ : std::vector<float>{}, channels,
                           gain);
}

float VolumeKeeper::newestGain() const {
    const std::vector<float>* const ours = ownVolumes_.newest();
    return loudestOf(ours != nullptr ? *ours : props_->channelVolumes);
}

bool VolumeKeeper::isMuted() const {
    const bool* const ours = ownMutes_.newest();
    return ours != nullptr ? *ours : props_->mute;
}
