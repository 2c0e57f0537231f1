#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QString>

#include <optional>

/// The stored position of a window: the text of a point, "{120, 48}", of the window's left edge and
/// of the distance from the top of its screen to its top, in desktop pixels.
namespace WindowPosition {

/// The text for a window with that frame on the screen.
[[nodiscard]] QString text(const QRect& frame, const QRect& screen);

/// The point that a text contains; nothing if it is no such text, or out of all proportion.
[[nodiscard]] std::optional<QPoint> parsed(const QString& text);

/// The upper left corner of a window at the stored point. Which screen it was is not stored: the
/// first of `screens` that extends over its left edge counts, else the first of all. `screens` is
/// not empty.
[[nodiscard]] QPoint topLeft(const QPoint& stored, const QList<QRect>& screens);

} // namespace WindowPosition
