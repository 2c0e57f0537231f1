#include "plugin/volume/VolumeRamp.h"

#include <algorithm>
#include <cmath>

void VolumeRamp::aim(float from, float to, TimePoint now) noexcept {
    target_ = to;
    if (running_)
        return;
    running_ = true;
    position_ = std::cbrt(from);
    due_ = std::max(due_, now);
}

float VolumeRamp::step(TimePoint now) noexcept {
    due_ = now + interval;
    const float way = std::cbrt(target_) - position_;
    const float rounding = 1e-5F; // so that the end is not an extra step
    if (std::fabs(way) <= largestStep + rounding) {
        running_ = false;
        return target_;
    }
    position_ += std::copysign(largestStep, way);
    return position_ * position_ * position_;
}
