#include "plugin/volume/StreamVolume.h"

#include <algorithm>
#include <cmath>

namespace {

// Below this (-140 dB) what is left of the sound drowns in the rounding of the samples.
constexpr float smallestGain = 1e-7F;

} // namespace

void VolumeWrite::merge(const VolumeWrite& later) {
    if (later.channelVolumes)
        channelVolumes = later.channelVolumes;
    if (later.mute)
        mute = later.mute;
}

std::optional<int> WantedVolume::percent() const noexcept {
    if (!gain)
        return std::nullopt;
    return static_cast<int>(std::lround(100.0F * std::cbrt(*gain)));
}

void WantedVolume::merge(const WantedVolume& change) noexcept {
    if (change.gain)
        gain = change.gain;
    if (change.muted)
        muted = change.muted;
}

void OwnVolume::merge(const WantedVolume& change) noexcept {
    if (change.gain)
        gain = *change.gain > 0.0F ? std::min(*change.gain, 1.0F) : 0.0F; // also for NaN
    if (change.muted)
        muted = *change.muted;
}

WantedVolume combined(const WantedVolume& wanted, const OwnVolume& own) noexcept {
    WantedVolume all = wanted;
    if (all.gain)
        all.gain = *all.gain * own.gain;
    if (all.muted)
        all.muted = *all.muted || own.muted;
    return all;
}

float gainOfPercent(int percent) noexcept {
    const float fraction = static_cast<float>(std::clamp(percent, 0, 100)) / 100.0F;
    return fraction * fraction * fraction;
}

bool isSameGain(float a, float b) noexcept {
    constexpr float relativeTolerance = 1e-4F;
    return std::fabs(a - b) <= std::max(relativeTolerance * std::max(a, b), smallestGain);
}

bool areSameGains(const std::vector<float>& a, const std::vector<float>& b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), isSameGain);
}

float loudestOf(const std::vector<float>& channelVolumes) noexcept {
    return channelVolumes.empty() ? 0.0F
                                  : *std::max_element(channelVolumes.begin(), channelVolumes.end());
}

float channelGain(const StreamProps& props, std::size_t channel) noexcept {
    if (props.mute)
        return 0.0F;
    const auto& volumes = props.channelVolumes;
    if (volumes.empty())
        return props.volume;
    return props.volume * volumes[std::min(channel, volumes.size() - 1)];
}

float loudestGain(const StreamProps& props) noexcept {
    float gain = channelGain(props, 0);
    for (std::size_t i = 1; i < props.channelVolumes.size(); ++i)
        gain = std::max(gain, channelGain(props, i));
    return gain;
}

bool isSilenced(const StreamProps& props) noexcept {
    return loudestGain(props) <= smallestGain;
}

bool haveSameGains(const StreamProps& a, const StreamProps& b) noexcept {
    const std::size_t channels = std::max(a.channelVolumes.size(), b.channelVolumes.size());
    for (std::size_t i = 0; i < std::max<std::size_t>(channels, 1); ++i) {
        if (!isSameGain(channelGain(a, i), channelGain(b, i)))
            return false;
    }
    return true;
}

float levelBeforeGain(std::span<const ChannelPeak> peaks, const StreamProps& props) noexcept {
    const bool mixed = peaks.size() != props.channelVolumes.size();
    float level = 0.0F;
    for (const ChannelPeak& measured : peaks) {
        const float gain = mixed ? loudestGain(props) : channelGain(props, measured.channel);
        if (gain > smallestGain)
            level = std::max(level, measured.peak / gain);
    }
    return std::min(level, 1.0F);
}

std::vector<float> balancedVolumes(const std::vector<float>& balance, std::size_t channels,
                                   float gain) {
    const float peak = loudestOf(balance);
    if (peak <= 0.0F) {
        const std::size_t known = std::max(balance.size(), channels);
        return std::vector<float>(std::max<std::size_t>(known, 1), gain);
    }
    std::vector<float> volumes = balance;
    for (float& volume : volumes)
        volume = volume / peak * gain;
    return volumes;
}

bool isInEffect(const WantedVolume& wanted, const StreamProps& props) noexcept {
    if (wanted.muted && *wanted.muted != props.mute)
        return false;
    if (!wanted.gain)
        return true;
    return !props.channelVolumes.empty() &&
           isSameGain(loudestOf(props.channelVolumes), *wanted.gain);
}

bool VolumeHold::takeWrite(platform::MonotonicClock::time_point now) noexcept {
    if (isOver(now) || writes_ == mostWrites)
        return false;
    ++writes_;
    return true;
}
