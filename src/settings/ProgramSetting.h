#pragma once

/// What the user has set for one program, wherever it travels: in the preferences, over the session
/// bus, between application and plug-in. Plain data, any thread.
///
/// The percent is 0 to 100. Other mixers go above that, and reports of them come as they are; who
/// takes a setting over, to keep or to show it, clamps it. What a caller on the bus asks for beyond
/// the range is refused.
struct ProgramSetting {
    static constexpr int fullVolume = 100; ///< percent

    int percent = fullVolume;
    bool muted = false;

    bool operator==(const ProgramSetting&) const = default;

    /// Whether it is what a program has that nobody has set, so that nothing need be remembered.
    [[nodiscard]] bool isPlain() const noexcept { return *this == ProgramSetting{}; }

    [[nodiscard]] static bool isInRange(int percent) noexcept {
        return percent >= 0 && percent <= fullVolume;
    }
    static int clamped(int percent) noexcept;
    static double clamped(double percent) noexcept;
    [[nodiscard]] ProgramSetting clamped() const noexcept { return {clamped(percent), muted}; }
};
