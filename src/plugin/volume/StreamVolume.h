#pragma once

#include "platform/base/MonotonicClock.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

/// The arithmetic of a stream's volume: pure functions over plain values, any thread.
///
/// The user sees percentages; samples are multiplied by the gain, the cube of the percentage, as in
/// every other mixer of the desktop. The gain of a channel is the product of the stream's scalar
/// volume and its entry in the channel volumes, or zero if muted. We never change the scalar: no
/// mixer shows it, so the user could not undo it.

/// A stream's volume as reported by the server.
struct StreamProps {
    std::vector<float> channelVolumes; ///< linear; empty until the stream has a format
    bool mute = false;
    float volume = 1.0F; ///< the scalar, linear

    bool operator==(const StreamProps&) const = default;
};

/// Values to write to a stream; missing ones stay.
struct VolumeWrite {
    std::optional<std::vector<float>> channelVolumes; ///< linear
    std::optional<bool> mute;

    bool operator==(const VolumeWrite&) const = default;

    [[nodiscard]] bool isEmpty() const noexcept { return !channelVolumes && !mute; }

    /// Merges a later write.
    void merge(const VolumeWrite& later);
};

/// A wanted volume; missing values are not wanted.
struct WantedVolume {
    std::optional<float> gain; ///< linear, of the loudest channel; other mixers go above 1
    std::optional<bool> muted;

    bool operator==(const WantedVolume&) const = default;

    [[nodiscard]] bool isEmpty() const noexcept { return !gain && !muted; }

    /// The gain in percent, rounded.
    [[nodiscard]] std::optional<int> percent() const noexcept;

    /// Merges a change.
    void merge(const WantedVolume& change) noexcept;
};

/// The volume that a program sets on its own stream: a player that starts quietly, a page that
/// fades out. It is multiplied with the user's volume, and never remembered.
struct OwnVolume {
    float gain = 1.0F; ///< linear, 0 to 1
    bool muted = false;

    bool operator==(const OwnVolume&) const = default;

    /// Merges a change by the program, limited to full volume.
    void merge(const WantedVolume& change) noexcept;
};

/// The stream's resulting volume: the product of both gains, muted if either is. The scale does not
/// matter, since the cube of a product is the product of the cubes. Values that are not wanted stay
/// missing.
WantedVolume combined(const WantedVolume& wanted, const OwnVolume& own) noexcept;

/// The volume of an unchanged program.
inline constexpr WantedVolume kFullVolume{1.0F, false};

/// The peak of one channel after the gain, linear.
struct ChannelPeak {
    std::size_t channel;
    float peak;
};

/// The displayed level of a running stream whose gain is zero. It is silent where we measure, but
/// the user must see that it plays.
inline constexpr float kSilencedStreamLevel = 0.01F;

/// The linear gain of a percentage, which is clamped to 0 to 100.
float gainOfPercent(int percent) noexcept;

/// Whether the gains are indistinguishable; one of them may have been rounded.
[[nodiscard]] bool isSameGain(float a, float b) noexcept;

/// The same for each of two streams' channels.
[[nodiscard]] bool areSameGains(const std::vector<float>& a, const std::vector<float>& b) noexcept;

/// The maximum of a stream's channel volumes; 0 without any.
float loudestOf(const std::vector<float>& channelVolumes) noexcept;

/// The gain in effect for a channel. Channels beyond the array have its last value.
float channelGain(const StreamProps& props, std::size_t channel) noexcept;

/// The gain in effect for the loudest channel.
float loudestGain(const StreamProps& props) noexcept;

/// Whether all channels are silent.
[[nodiscard]] bool isSilenced(const StreamProps& props) noexcept;

/// Whether both sound the same.
[[nodiscard]] bool haveSameGains(const StreamProps& a, const StreamProps& b) noexcept;

/// The highest peak of the stream before its gain, 0 to 1, from those of all its ports. Channels
/// with gain zero are ignored. If the number of ports differs from that of channels, each port
/// counts with the gain of the loudest channel.
float levelBeforeGain(std::span<const ChannelPeak> peaks, const StreamProps& props) noexcept;

/// `balance` scaled so that its loudest channel has `gain`. If it is empty or all zero, `channels`
/// equal values; if that is 0, a single value, which the server applies to all channels.
std::vector<float> balancedVolumes(const std::vector<float>& balance, std::size_t channels,
                                   float gain);

/// Whether the stream has the wanted volume. Values are compared with a tolerance, since they are
/// rounded on the way.
[[nodiscard]] bool isInEffect(const WantedVolume& wanted, const StreamProps& props) noexcept;

/// The maximum time for which a new stream is held at its wanted volume. The session manager
/// restores its own volume within milliseconds after our first write.
class VolumeHold {
  public:
    static constexpr std::chrono::milliseconds duration{500};
    static constexpr int mostWrites = 16; ///< so that two holders do not fight forever

    explicit VolumeHold(platform::MonotonicClock::time_point streamAppeared) noexcept
        : end_(streamAppeared + duration) {}

    /// Whether a foreign change may be overwritten; counts as one write when it may.
    [[nodiscard]] bool takeWrite(platform::MonotonicClock::time_point now) noexcept;

    [[nodiscard]] bool isOver(platform::MonotonicClock::time_point now) const noexcept {
        return now >= end_;
    }

  private:
    platform::MonotonicClock::time_point end_;
    int writes_ = 0;
};
