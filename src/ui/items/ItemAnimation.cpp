#include "ui/items/ItemAnimation.h"

std::chrono::milliseconds ItemAnimation::duration() const noexcept {
    using namespace std::chrono_literals;
    return isEnabled && !isInLiveResize && sinceStart >= 1s ? 150ms : 0ms;
}
