#pragma once

#include <QRect>
#include <QSize>

#include <Qt>

/// Resizing a window that draws its own frame at its edges. Lengths are pixels.
namespace WindowEdges {

/// The edge, or the two edges of a corner, that a press at `point` drags; none in the middle of the
/// window.
Qt::Edges at(const QPointF& point, const QSize& size) noexcept;

/// The cursor for these edges; an arrow for none.
Qt::CursorShape cursor(Qt::Edges edges) noexcept;

/// The frame after its edges have been dragged by `offset`, within the minimum and maximum size;
/// the other edges stay. Without edges the whole frame is moved.
QRect dragged(const QRect& frame, Qt::Edges edges, const QPoint& offset, const QSize& least,
              const QSize& most) noexcept;

} // namespace WindowEdges
