#include "ui/items/ItemMotion.h"

std::chrono::milliseconds ItemMotion::duration() const noexcept {
    using namespace std::chrono_literals;
    return isWanted && !isInLiveResize && sinceStart >= 1s ? 150ms : 0ms;
}
