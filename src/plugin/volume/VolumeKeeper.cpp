#include "plugin/volume/VolumeKeeper.h"

#include <algorithm>
#include <functional>

using Author = ChangeAuthor::Author;

void VolumeKeeper::foundThere() noexcept {
    author_.found();
    ownKnowledge_ = OwnKnowledge::none;
}

void VolumeKeeper::heardAlready() noexcept {
    foundThere();
    author_.linked();
    heardAlready_ = true;
}

VolumeWrite VolumeKeeper::adopt(const WantedVolume& all, TimePoint now) {
    VolumeWrite write = finish();
    wanted_ = all;
    resting_ = {};
    adopted_ = true;
    isReleased_ = false;
    if (!props_)
        return write;
    VolumeWrite more = apply(now);
    if (!more.channelVolumes)
        more.channelVolumes = std::move(write.channelVolumes);
    return more;
}

VolumeWrite VolumeKeeper::want(const WantedVolume& change, TimePoint now, WantReason reason) {
    makeRoomFor(change, reason);
    wanted_.merge(change);
    return props_ ? bringAbout(change, now) : VolumeWrite{};
}

void VolumeKeeper::release() noexcept {
    isReleased_ = true;
    own_ = {};
    ownKnowledge_ = OwnKnowledge::none;
}

void VolumeKeeper::uphold(TimePoint now) noexcept {
    if (isReleased_)
        return;
    author_.uphold(now);
    resting_ = {};         // it is set back before it has counted
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
    const Author author = author_.of(now);
    if (author == Author::sessionManager)
        return restoredBySessionManager(now);
    VolumeWrite write;
    if (props.channelVolumes.size() != before->channelVolumes.size())
        write = reformatted();
    const ForeignChange foreign = takeForeign(*before);
    if (!foreign.change.isEmpty())
        write.merge(author == Author::program ? changedByProgram(foreign, now)
                                              : changedByPerson(foreign, now));
    return write;
}

std::optional<VolumeKeeper::TimePoint> VolumeKeeper::due() const noexcept {
    std::optional<TimePoint> next = correction_;
    const auto add = [&next](TimePoint time) { next = std::min(next.value_or(time), time); };
    if (ramp_.isRunning())
        add(ramp_.due());
    if (!resting_.isEmpty())
        add(restEnds_);
    return next;
}

VolumeWrite VolumeKeeper::wake(TimePoint now) {
    VolumeWrite write;
    if (ramp_.isRunning() && ramp_.due() <= now)
        write = written({volumesAt(ramp_.step(now)), std::nullopt});
    if (correction_ && *correction_ <= now)
        write.merge(correct(now));
    if (!resting_.isEmpty() && restEnds_ <= now)
        settle();
    return write;
}

VolumeWrite VolumeKeeper::finish() {
    if (!ramp_.isRunning())
        return {};
    ramp_.stop();
    return written({volumesAt(ramp_.target()), std::nullopt});
}

/// Brings about all that is wanted.
VolumeWrite VolumeKeeper::apply(TimePoint now) {
    if (author_.kind() == StreamKind::page)
        explainFound();
    else if (heardAlready_)
        return applyQuietly(now);
    return isInEffect(heard(), *props_) ? VolumeWrite{} : bringAbout(wanted_, now);
}

/// Brings about what makes the stream quieter and takes the rest from what is in effect.
VolumeWrite VolumeKeeper::applyQuietly(TimePoint now) {
    const float gain = loudestOf(props_->channelVolumes);
    const WantedVolume all = heard();
    WantedVolume quieter;
    WantedVolume found;
    if (all.gain && *all.gain < gain && !isSameGain(*all.gain, gain))
        quieter.gain = wanted_.gain;
    else if (!props_->channelVolumes.empty())
        found.gain = gain;
    if (all.muted.value_or(false))
        quieter.muted = true;
    else
        found.muted = props_->mute;
    wanted_.merge(found);
    found_.merge(found);
    return bringAbout(quieter, now);
}

/// A page that is found below its wanted volume must have turned itself down.
void VolumeKeeper::explainFound() {
    if (!wanted_.gain || props_->channelVolumes.empty() || ownKnowledge_ != OwnKnowledge::none)
        return;
    ownKnowledge_ = OwnKnowledge::guess;
    if (*wanted_.gain > 0.0F)
        own_.merge({loudestOf(props_->channelVolumes) / *wanted_.gain, std::nullopt});
    own_.muted = props_->mute && !wanted_.muted.value_or(false);
    if (own_ != OwnVolume{})
        found_.merge({loudestOf(props_->channelVolumes), props_->mute});
}

/// Brings about the parts of what is wanted that are in `change`.
VolumeWrite VolumeKeeper::bringAbout(const WantedVolume& change, TimePoint now) {
    const WantedVolume all = heard();
    VolumeWrite write;
    if (needsRamp(change, now)) {
        if (change.gain)
            ramp_.aim(newestGain(), all.gain.value(), now);
        if (ramp_.isRunning() && ramp_.due() <= now)
            write.channelVolumes = volumesAt(ramp_.step(now));
    } else if (change.gain || ramp_.isRunning()) {
        ramp_.stop();
        write.channelVolumes = volumesAt(all.gain.value());
    }
    if (change.muted)
        write.mute = all.muted;
    return written(std::move(write));
}

VolumeWrite VolumeKeeper::restoredBySessionManager(TimePoint now) {
    if (!isInEffect(heard(), *props_))
        return author_.takeWrite(now) ? bringAbout(wanted_, now) : VolumeWrite{};
    ownVolumes_.clear();
    ownMutes_.clear();
    return {};
}

/// The stream's format has changed; the server has initialised its volumes.
VolumeWrite VolumeKeeper::reformatted() {
    ramp_.stop();
    ownVolumes_.clear();
    const std::vector<float>& volumes = props_->channelVolumes;
    const std::optional<float> gain = resting_.gain ? resting_.gain : heard().gain;
    if (isReleased_ || !gain || volumes.empty() || isSameGain(loudestOf(volumes), *gain))
        return {};
    return written({volumesAt(*gain), std::nullopt});
}

/// What is in effect now and was not before, as far as it is not our own doing.
VolumeKeeper::ForeignChange VolumeKeeper::takeForeign(const StreamProps& before) {
    ForeignChange foreign;
    const std::vector<float>& volumes = props_->channelVolumes;
    if (volumes.size() == before.channelVolumes.size() &&
        !areSameGains(volumes, before.channelVolumes) &&
        !ownVolumes_.takeEcho(volumes, areSameGains)) {
        foreign.change.gain = loudestOf(volumes);
        foreign.overtaken = ramp_.isRunning() && ownVolumes_.newest() != nullptr;
        ramp_.stop();
        ownVolumes_.clear();
    }
    if (props_->mute != before.mute && !ownMutes_.takeEcho(props_->mute, std::equal_to<bool>())) {
        foreign.change.muted = props_->mute;
        ownMutes_.clear();
    }
    return foreign;
}

VolumeWrite VolumeKeeper::changedByProgram(const ForeignChange& foreign, TimePoint now) {
    if (isReleased_ && adopted_)
        return {};
    const bool isPage = author_.kind() == StreamKind::page;
    WantedVolume own = foreign.change;
    // A player may set its saved volume, which was the user's.
    if (!isPage && own.gain && wanted_.gain.value_or(0.0F) > 0.0F)
        own.gain = *own.gain / *wanted_.gain;
    own_.merge(own);
    ownKnowledge_ = isPage ? OwnKnowledge::certain : OwnKnowledge::guess;
    VolumeWrite write = correct(now);
    if (write.isEmpty() && foreign.overtaken && !correction_)
        write = written({props_->channelVolumes, std::nullopt});
    return write;
}

VolumeWrite VolumeKeeper::changedByPerson(const ForeignChange& foreign, TimePoint now) {
    resting_.merge(foreign.change);
    restEnds_ = now + rest;
    return foreign.overtaken ? written({props_->channelVolumes, std::nullopt}) : VolumeWrite{};
}

/// Has what is wanted and the program's own volume in effect together, at once: what the program
/// has just written may be louder. A ramp that a command has started since gets there by itself.
VolumeWrite VolumeKeeper::correct(TimePoint now) {
    correction_.reset();
    const WantedVolume all = heard();
    if (isReleased_ || isInEffect(all, *props_))
        return {};
    if (lastCorrection_ > now - correctionPause) {
        correction_ = lastCorrection_ + correctionPause;
        return {};
    }
    lastCorrection_ = now;
    VolumeWrite write;
    if (all.gain && !ramp_.isRunning() && !isSameGain(loudestOf(props_->channelVolumes), *all.gain))
        write.channelVolumes = volumesAt(*all.gain);
    if (all.muted && *all.muted != props_->mute)
        write.mute = all.muted;
    return written(std::move(write));
}

/// Accepts a change that has been stable as the user's, unless it changes nothing.
void VolumeKeeper::settle() {
    WantedVolume will = std::exchange(resting_, {});
    const WantedVolume all = heard();
    if (will.gain && all.gain && isSameGain(*will.gain, *all.gain))
        will.gain.reset();
    if (will.muted == all.muted)
        will.muted.reset();
    if (will.isEmpty())
        return;
    addUntouched(will);
    if (will.gain)
        own_.gain = 1.0F;
    if (will.muted)
        own_.muted = false;
    wanted_.merge(will);
    elsewhere_.merge(will);
}

/// A command for a volume overrides a recent change.
void VolumeKeeper::makeRoomFor(const WantedVolume& change, WantReason reason) noexcept {
    if (change.gain)
        resting_.gain.reset();
    if (change.muted)
        resting_.muted.reset();
    if (ownKnowledge_ == OwnKnowledge::guess)
        reviewGuess(change, reason);
}

void VolumeKeeper::reviewGuess(const WantedVolume& change, WantReason reason) noexcept {
    const float before = wanted_.gain.value_or(0.0F);
    if (reason == WantReason::restored) {
        if (change.gain && *change.gain > 0.0F && before > 0.0F)
            own_.merge({own_.gain * before / *change.gain, std::nullopt});
        return;
    }
    const bool isNews = reason == WantReason::news;
    if (change.gain && (isNews || !isSameGain(*change.gain, before)))
        own_.gain = 1.0F;
    if (change.muted && (isNews || change.muted != wanted_.muted))
        own_.muted = false;
}

/// A change of only volume or mute confirms the other value.
void VolumeKeeper::addUntouched(WantedVolume& will) const {
    if (!will.gain && !wanted_.gain && !props_->channelVolumes.empty())
        will.gain = loudestOf(props_->channelVolumes);
    if (!will.muted && !wanted_.muted)
        will.muted = props_->mute;
}

bool VolumeKeeper::needsRamp(const WantedVolume& change, TimePoint now) const {
    return running_ && (heardAlready_ || author_.isHoldOver(now)) && !isMuted() &&
           !(change.muted && heard().muted.value_or(false));
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
