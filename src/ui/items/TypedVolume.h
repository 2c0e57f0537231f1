#pragma once

#include "settings/VolumeChange.h"

#include <QString>

#include <optional>
#include <variant>

/// What a person types for a volume: a percent, a step such as "+5", or a word for a mute.
struct TypedVolume {
    struct Mute {
        bool isMuted;
    };
    std::variant<VolumeChange, Mute> wish;

    /// Takes "mute" and "unmute" in English and in the user's language, digits of any script, and
    /// blanks around them. Nothing for anything else.
    [[nodiscard]] static std::optional<TypedVolume> parse(const QString& text);
};
