#pragma once

#include "platform/base/MonotonicClock.h"

#include <optional>

/// What a turn of the wheel means: it scrolls, and changes a volume only over a slider. Shortly
/// after a scroll it goes on scrolling, whatever has come under the pointer. Main thread only.
class WheelPolicy {
  public:
    enum class Use { scroll, volume };

    /// So long after a scroll no volume is changed.
    static constexpr std::chrono::milliseconds pause{300};

    /// For a turn that comes now.
    Use use(bool isOverSlider);

  private:
    std::optional<platform::MonotonicClock::time_point> scrolled_; // the last time
};

/// Turns, which may be small ones, added up to whole steps.
class WheelSteps {
  public:
    /// How many whole steps have come together with this part of one; the rest is kept. A turn the
    /// other way begins anew.
    int add(double part);
    void clear() noexcept { rest_ = 0; }

  private:
    double rest_ = 0;
};
