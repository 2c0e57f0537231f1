#include "ui/input/WheelPolicy.h"

#include <cmath>

using platform::MonotonicClock;

WheelPolicy::Use WheelPolicy::use(bool isOverSlider) {
    const auto now = MonotonicClock::now();
    const bool isScrolling = scrolled_ && now - *scrolled_ < pause;
    if (isOverSlider && !isScrolling)
        return Use::volume;
    scrolled_ = now;
    return Use::scroll;
}

int WheelSteps::add(double part) {
    if (std::signbit(part) != std::signbit(rest_))
        rest_ = 0;
    rest_ += part;
    const double whole = std::trunc(rest_);
    rest_ -= whole;
    return static_cast<int>(whole);
}
