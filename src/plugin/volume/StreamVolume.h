#pragma once

#include "platform/base/MonotonicClock.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

/// The arithmetic of a stream's volume: pure functions over plain values, any thread.
///
/// A percentage is what a person sees, the gain what the samples are multiplied with: its cube, as
/// in every other mixer of the desktop. The gain of a channel is the product of the stream's scalar
/// volume, its entry in the channel volumes, and zero when muted. The scalar is never ours: nobody
/// shows it, so a program left quiet by it could not be helped.

/// What the server told about a stream.
struct StreamProps {
    std::vector<float> channelVolumes; ///< linear; empty until the stream has a format
    bool mute = false;
    float volume = 1.0F; ///< the scalar, linear

    bool operator==(const StreamProps&) const = default;
};

/// What is to be written to a stream; what is not given stays.
struct VolumeWrite {
    std::optional<std::vector<float>> channelVolumes; ///< linear
    std::optional<bool> mute;

    bool operator==(const VolumeWrite&) const = default;

    bool isEmpty() const noexcept { return !channelVolumes && !mute; }

    /// Takes over what `later` writes.
    void merge(const VolumeWrite& later);
};

/// What somebody wants; nothing where nobody wants anything.
struct WantedVolume {
    std::optional<float> gain; ///< linear, of the loudest channel; other mixers go above 1
    std::optional<bool> muted;

    bool operator==(const WantedVolume&) const = default;

    bool isEmpty() const noexcept { return !gain && !muted; }

    /// The gain as a person sees it, rounded.
    std::optional<int> percent() const noexcept;

    /// Takes over what `change` asks for.
    void merge(const WantedVolume& change) noexcept;
};

/// What a program makes of its stream by itself: a player that begins quietly, a page that fades
/// out. It is heard on top of what a person wants, and never remembered.
struct OwnVolume {
    float gain = 1.0F; ///< linear, 0 to 1
    bool muted = false;

    bool operator==(const OwnVolume&) const = default;

    /// Takes over what the program has set. It cannot make itself louder than full.
    void merge(const WantedVolume& change) noexcept;
};

/// What the stream gets when `wanted` is wanted of it: the product of both gains, muted when either
/// is. It does not matter on which scale the gains are multiplied, since the cube of a product is
/// the product of the cubes. Nothing where nothing is wanted.
WantedVolume combined(const WantedVolume& wanted, const OwnVolume& own) noexcept;

/// What a program has that nobody has changed.
inline constexpr WantedVolume kFullVolume{1.0F, false};

/// The peak of one channel after the gain, linear.
struct ChannelPeak {
    std::size_t channel;
    float peak;
};

/// The level that stands for a running stream whose gain is zero. What it plays is silent where we
/// measure, and yet a person must see that it plays.
inline constexpr float kSilencedStreamLevel = 0.01F;

/// The linear gain of a percentage, which is clamped to 0 to 100.
float gainOfPercent(int percent) noexcept;

/// Whether nobody can tell the gains apart, of which one may have come back rounded.
bool isSameGain(float a, float b) noexcept;

/// The same for each of two streams' channels.
bool areSameGains(const std::vector<float>& a, const std::vector<float>& b) noexcept;

/// The greatest of a stream's channel volumes; 0 without any.
float loudestOf(const std::vector<float>& channelVolumes) noexcept;

/// The gain in effect for a channel. Channels beyond the array have its last value.
float channelGain(const StreamProps& props, std::size_t channel) noexcept;

/// The gain in effect for the loudest channel.
float loudestGain(const StreamProps& props) noexcept;

/// Whether no channel is let through.
bool isSilenced(const StreamProps& props) noexcept;

/// Whether both would sound the same.
bool haveSameGains(const StreamProps& a, const StreamProps& b) noexcept;

/// The highest peak of the stream before its gain, 0 to 1, from those of all its ports. Channels
/// that are turned down fully say nothing of what is played. A stream whose channels are mixed to
/// another number of ports is taken to have the gain of its loudest channel at each.
float levelBeforeGain(std::span<const ChannelPeak> peaks, const StreamProps& props) noexcept;

/// `balance` scaled so that its loudest channel has `gain`. When it is empty or all zero, all of
/// `channels` are equal; a single value, which the server spreads, when that is 0.
std::vector<float> balancedVolumes(const std::vector<float>& balance, std::size_t channels,
                                   float gain);

/// Whether nothing needs to be written for the stream to have the wanted volume. Values are
/// compared with a tolerance, since they come back rounded.
bool isInEffect(const WantedVolume& wanted, const StreamProps& props) noexcept;

/// How long a new stream is held at its wanted volume at most. The session manager restores a
/// volume of its own within milliseconds after we first write.
class VolumeHold {
  public:
    static constexpr std::chrono::milliseconds duration{500};
    static constexpr int mostWrites = 16; ///< so that two that hold do not fight for ever

    explicit VolumeHold(platform::MonotonicClock::time_point streamAppeared) noexcept
        : end_(streamAppeared + duration) {}

    /// Whether a foreign change may be overwritten; counts as one write when it may.
    [[nodiscard]] bool takeWrite(platform::MonotonicClock::time_point now) noexcept;

    bool isOver(platform::MonotonicClock::time_point now) const noexcept { return now >= end_; }

  private:
    platform::MonotonicClock::time_point end_;
    int writes_ = 0;
};
