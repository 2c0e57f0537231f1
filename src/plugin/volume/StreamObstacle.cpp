#include "plugin/volume/StreamObstacle.h"

void StreamObstacle::formatTold(std::uint32_t index, bool isRaw) noexcept {
    raw_ = isRaw || (index > 0 && raw_.value_or(false));
}

std::string_view StreamObstacle::reason() const noexcept {
    if (!readable_.value_or(true))
        return "It plays past every volume control.";
    if (!raw_.value_or(true))
        return "Its sound goes to the device encoded, as it is.";
    if (locked_)
        return "It has locked its volume.";
    return {};
}
