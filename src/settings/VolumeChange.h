#pragma once

#include <optional>
#include <string_view>

/// A typed volume: a percent, "40" or "40%", or a step, "+5%" or "-5". Any thread.
struct VolumeChange {
    int percent = 0; ///< 0 to 100, or the step
    bool isStep = false;

    bool operator==(const VolumeChange&) const = default;

    /// Nothing for anything else.
    [[nodiscard]] static std::optional<VolumeChange> parse(std::string_view text);

    /// The new value of `before`, clamped to 0 to 100 for a step.
    [[nodiscard]] int appliedTo(int before) const;
};
