#pragma once

#include <QRect>
#include <QSize>

/// The layout of an item: the icon, and beside it the name above the mute button and the slider.
/// Mirrored for right-to-left languages.
struct ItemLayout {
    /// All items have this height, and at least this width, in pixels.
    static constexpr int height = 64;
    static constexpr int leastWidth = 300;
    static constexpr int nameHeight = 28;

    ItemLayout(const QSize& size, Qt::LayoutDirection direction) noexcept;

    QRect icon;
    QRect name;
    QRect mute;
    QRect slider;
};
