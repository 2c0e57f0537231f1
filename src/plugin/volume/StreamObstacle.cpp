#include "plugin/volume/StreamObstacle.h"

#include "platform/base/MarkedText.h"

void StreamObstacle::formatTold(std::uint32_t index, bool isRaw) noexcept {
    raw_ = isRaw || (index > 0 && raw_.value_or(false));
}

std::string_view StreamObstacle::reason() const noexcept {
    if (!readable_.value_or(true))
        return MARKED_TEXT("Texts", "The program bypasses all volume controls.");
    if (!raw_.value_or(true))
        return MARKED_TEXT("Texts", "Its sound is sent to the device in encoded form.");
    if (locked_)
        return MARKED_TEXT("Texts", "The program has locked its volume.");
    return {};
}
