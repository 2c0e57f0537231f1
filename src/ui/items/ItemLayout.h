#pragma once

#include <QRect>
#include <QSize>

/// The layout of an item: the icon, and beside it the name and the state above the mute button and
/// the slider. Mirrored for right-to-left languages.
struct ItemLayout {
    /// All items have this height, and at least this width, in pixels.
    static constexpr int height = 64;
    static constexpr int leastWidth = 300;
    static constexpr int nameHeight = 28;

    /// By which the state reaches beyond the end of the slider, so that its figures end there.
    static constexpr int statusPadding = 5;

    /// The name gets what a state of that width leaves.
    ItemLayout(const QSize& size, Qt::LayoutDirection direction, int statusWidth = 0) noexcept;

    QRect icon;
    QRect name;
    QRect status;
    QRect mute;
    QRect slider;
};
