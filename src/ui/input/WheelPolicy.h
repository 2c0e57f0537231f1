#pragma once

#include "platform/base/MonotonicClock.h"

#include <optional>

/// Decides whether the wheel scrolls or changes a volume: over a slider it changes the volume,
/// elsewhere it scrolls. Shortly after a scroll it continues to scroll, whatever is under the
/// pointer. Main thread only.
class WheelPolicy {
  public:
    enum class Use { scroll, volume };

    /// For this time after a scroll no volume is changed.
    static constexpr std::chrono::milliseconds pause{300};

    /// The use of a wheel event that arrives now.
    Use use(bool isOverSlider);

  private:
    std::optional<platform::MonotonicClock::time_point> scrolled_; // the last time
};

/// Adds up small wheel movements to whole steps.
class WheelSteps {
  public:
    /// Adds a part of a step and returns the whole steps; the rest is kept. A change of direction
    /// discards the rest.
    int add(double part);
    void clear() noexcept { rest_ = 0; }

  private:
    double rest_ = 0;
};
