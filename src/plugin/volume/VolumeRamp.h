#pragma once

#include "platform/base/MonotonicClock.h"

/// Leads a volume to another in steps so small that nobody hears them: a jump of the gain is a
/// click, a drag of a slider a crackle. Steps are even on the scale that people see. Says what to
/// write and when; writing is up to its owner. Any thread, one at a time.
class VolumeRamp {
  public:
    using TimePoint = platform::MonotonicClock::time_point;

    static constexpr float largestStep = 0.05F; ///< of the cube root of the gain
    static constexpr std::chrono::milliseconds interval{20};

    /// Heads for the gain `to`: from where the ramp is, or else from `from`. The first step is due
    /// at once, but not sooner after the last one of an earlier ramp than any other step.
    void aim(float from, float to, TimePoint now) noexcept;

    bool isRunning() const noexcept { return running_; }

    /// The gain that a running ramp heads for.
    float target() const noexcept { return target_; }

    /// When the next step of a running ramp is to be taken.
    TimePoint due() const noexcept { return due_; }

    /// Takes the next step of a running ramp, which may be its last, and answers the gain that is
    /// to be written now.
    [[nodiscard]] float step(TimePoint now) noexcept;

    void stop() noexcept { running_ = false; }

  private:
    bool running_ = false;
    float position_ = 0.0F; // the cube root of the gain
    float target_ = 0.0F;   // the gain
    TimePoint due_;         // of the next step, in this ramp or another
};
