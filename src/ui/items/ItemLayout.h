#pragma once

#include <QRect>
#include <QSize>

/// Where the parts of an item are: the icon, and beside it the name above the mute button and the
/// slider. Mirrored for languages that are written from right to left.
struct ItemLayout {
    /// All items are of this height, in pixels, and at least this wide.
    static constexpr int height = 64;
    static constexpr int leastWidth = 300;
    static constexpr int nameHeight = 28;

    ItemLayout(const QSize& size, Qt::LayoutDirection direction) noexcept;

    QRect icon;
    QRect name;
    QRect mute;
    QRect slider;
};
