#pragma once

#include "platform/base/MonotonicClock.h"

/// Changes a volume in steps that are too small to hear: a jump of the gain clicks, a drag of a
/// slider crackles. Steps are equal on the percent scale. It computes values and times; its owner
/// writes them. Any thread, one at a time.
class VolumeRamp {
  public:
    using TimePoint = platform::MonotonicClock::time_point;

    static constexpr float largestStep = 0.05F; ///< of the cube root of the gain
    static constexpr std::chrono::milliseconds interval{20};

    /// Sets the target gain `to`, starting at the current position of a running ramp, else at
    /// `from`. The first step is due at once, but not sooner than one interval after the last step
    /// of an earlier ramp.
    void aim(float from, float to, TimePoint now) noexcept;

    [[nodiscard]] bool isRunning() const noexcept { return running_; }

    /// The target gain of a running ramp.
    [[nodiscard]] float target() const noexcept { return target_; }

    /// When the next step of a running ramp is due.
    [[nodiscard]] TimePoint due() const noexcept { return due_; }

    /// Makes the next step of a running ramp, which may be its last, and returns the gain to write
    /// now.
    [[nodiscard]] float step(TimePoint now) noexcept;

    void stop() noexcept { running_ = false; }

  private:
    bool running_ = false;
    float position_ = 0.0F; // the cube root of the gain
    float target_ = 0.0F;   // the gain
    TimePoint due_;         // of the next step, in this ramp or another
};
