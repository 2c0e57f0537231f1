#pragma once

#include <QRect>
#include <QSizeF>
#include <QString>

#include <optional>

/// How large the volume window and its items may be. Items lie in rows of one height, below a title
/// bar. All lengths are pixels; none is negative.
namespace WindowSize {

struct Heights {
    double item;
    double titleBar;
};

struct Limits {
    QSizeF minimum;
    QSizeF maximum; ///< unlimited in width
};

/// Of the window: at least two items high, at most 30.
Limits window(const Heights& heights);

/// Of one item, which is always just as high as it is.
Limits item(const Heights& heights);

/// The size for a window that is to get the proposed one: as wide, and so high that it shows whole
/// items, the nearest number of them; half an item makes one more. Fractions of the heights, and
/// what the height is above the last whole pixel, do not count. As proposed while items have no
/// height.
QSizeF snapped(const QSizeF& proposed, const Heights& heights);

/// A window's frame as it is kept in the preferences: "x y width height". Nothing when the text is
/// no frame, or a window without extent.
QString frameText(const QRect& frame);
std::optional<QRect> frameFromText(const QString& text);

} // namespace WindowSize
