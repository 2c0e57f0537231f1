#include "ui/items/ItemLayout.h"

#include <algorithm>

namespace {

constexpr int margin = 12;
constexpr int iconSize = 48; // which most icon themes have drawn
constexpr int textStart = margin + iconSize + margin;
constexpr int nameTop = 5;
constexpr int controlsTop = 33;
constexpr int muteWidth = 24;
constexpr int controlHeight = 24;
constexpr int gap = 6;

} // namespace

ItemLayout::ItemLayout(const QSize& size, Qt::LayoutDirection direction, int statusWidth) noexcept {
    const auto until = [&](int start) { return std::max(0, size.width() - margin - start); };
    icon = {margin, (size.height() - iconSize) / 2, iconSize, iconSize};
    const int shown = std::min(statusWidth, until(textStart));
    const int taken = shown > 0 ? shown - statusPadding + gap : 0;
    name = {textStart, nameTop, std::max(0, until(textStart) - taken), nameHeight};
    status = {size.width() - margin + statusPadding - shown, nameTop, shown, nameHeight};
    mute = {textStart, controlsTop, muteWidth, controlHeight};
    const int sliderStart = textStart + muteWidth + gap;
    slider = {sliderStart, controlsTop, until(sliderStart), controlHeight};
    if (direction != Qt::RightToLeft)
        return;
    for (QRect* const part : {&icon, &name, &status, &mute})
        part->moveLeft(size.width() - part->right() - 1);
    slider.moveLeft(margin);
}
