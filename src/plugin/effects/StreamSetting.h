#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What the session manager gives to the streams to come of one kind: a value in its settings,
/// which every mixer of the desktop reads and writes. Plain data, any thread.
struct StreamSetting {
    std::optional<bool> mute;
    std::vector<float> volumes;        ///< linear, one for each channel
    std::vector<std::string> channels; ///< such as "FL"
    std::string others; ///< members that are none of ours, as they are written, each with a comma

    bool operator==(const StreamSetting&) const = default;
};

/// Reads a value, which is an object of relaxed JSON. A member that makes no sense counts as
/// missing. Nothing when it is no object, or longer than any sensible one.
std::optional<StreamSetting> parseStreamSetting(std::string_view text);

/// Writes a value; what is missing is left out.
std::string formatStreamSetting(const StreamSetting& setting);

/// Whether both mean the same for a stream; one of them may have come back rounded.
bool haveSameEffect(const StreamSetting& a, const StreamSetting& b) noexcept;
