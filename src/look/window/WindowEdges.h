#pragma once

#include <QRect>
#include <QSize>

#include <Qt>

/// The edges of a window that draws its own frame: where a person takes hold of them, and where
/// they go. Lengths are pixels.
namespace WindowEdges {

/// The edge, or the two of a corner, that a press at `point` of a window of that size drags; none
/// in its middle.
Qt::Edges at(const QPointF& point, const QSize& size) noexcept;

/// What the pointer looks like there; an arrow for none.
Qt::CursorShape cursor(Qt::Edges edges) noexcept;

/// The frame after its edges have been dragged that far. It stays within the sizes; the edges that
/// are not dragged stay where they are. Without edges the whole frame is moved.
QRect dragged(const QRect& frame, Qt::Edges edges, const QPoint& offset, const QSize& least,
              const QSize& most) noexcept;

} // namespace WindowEdges
