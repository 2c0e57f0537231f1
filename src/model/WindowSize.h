#pragma once

#include <QRect>
#include <QSizeF>
#include <QString>

#include <optional>

/// The allowed sizes of the volume window and its items. Items are in rows of equal height, below a
/// title bar. All lengths are pixels; none is negative.
namespace WindowSize {

struct Heights {
    double item;
    double titleBar;
};

struct Limits {
    QSizeF minimum;
    QSizeF maximum; ///< unlimited in width
};

/// The limits of the window: between two and 30 items high.
Limits window(const Heights& heights);

/// The limits of one item, which has a fixed height.
Limits item(const Heights& heights);

/// The proposed size with its height rounded to whole items; half an item rounds up. All heights
/// are truncated to whole pixels. Unchanged if items have no height.
QSizeF snapped(const QSizeF& proposed, const Heights& heights);

/// The size that shows that many rows of items, or as many whole ones as the room is high; as wide
/// as the room.
QSizeF showingItems(int rows, const QSizeF& room, const Heights& heights);

/// A window's frame in its form in the preferences: "x y width height". Nothing if the text is
/// invalid, or the frame is empty.
QString frameText(const QRect& frame);
[[nodiscard]] std::optional<QRect> frameFromText(const QString& text);

} // namespace WindowSize
