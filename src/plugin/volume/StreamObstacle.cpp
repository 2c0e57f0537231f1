#include "plugin/volume/StreamObstacle.h"

void StreamObstacle::formatTold(std::uint32_t index, bool isRaw) noexcept {
    raw_ = isRaw || (index > 0 && raw_.value_or(false));
}

std::string_view StreamObstacle::reason() const noexcept {
    if (!readable_.value_or(true))
        return "The program bypasses all volume controls.";
    if (!raw_.value_or(true))
        return "Its sound is sent to the device in encoded form.";
    if (locked_)
        return "The program has locked its volume.";
    return {};
}
