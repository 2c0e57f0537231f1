#pragma once

#include <string>
#include <string_view>

/// What a person has written for a volume: a percent, "40" or "40%", or a step, "+5%" or "-5".
struct VolumeChange {
    int percent = 0; ///< 0 to 100, or the step
    bool isStep = false;

    bool operator==(const VolumeChange&) const = default;

    /// Throws Failure for what is neither.
    static VolumeChange parse(std::string_view text);

    /// What becomes of `before`, 0 to 100: a step ends there.
    int appliedTo(int before) const;
};
