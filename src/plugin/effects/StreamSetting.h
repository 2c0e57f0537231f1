#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The session manager's volume for future streams of one kind: a value in its settings, which
/// every mixer of the desktop reads and writes. Plain data, any thread.
struct StreamSetting {
    std::optional<bool> mute;
    std::vector<float> volumes;        ///< linear, one for each channel
    std::vector<std::string> channels; ///< such as "FL"
    std::string others;                ///< unknown members, unchanged, each with a comma

    bool operator==(const StreamSetting&) const = default;
};

/// Parses a value, an object in relaxed JSON. An invalid member counts as missing. Nothing if it is
/// not an object, or too long.
[[nodiscard]] std::optional<StreamSetting> parseStreamSetting(std::string_view text);

/// Formats a value; missing members are left out.
std::string formatStreamSetting(const StreamSetting& setting);

/// Whether both have the same effect on a stream; one of them may have been rounded.
[[nodiscard]] bool haveSameEffect(const StreamSetting& a, const StreamSetting& b) noexcept;
