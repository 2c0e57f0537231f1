#include "look/window/WindowEdges.h"

#include <algorithm>

namespace {

constexpr double edge = 5;
constexpr double corner = 16; // along an edge, from its ends

/// Which of two opposite edges `place` is near; `reach` is how near it has to be.
Qt::Edges nearer(double place, double length, double reach, Qt::Edge first, Qt::Edge last) {
    if (place < reach)
        return first;
    return place >= length - reach ? Qt::Edges(last) : Qt::Edges();
}

} // namespace

Qt::Edges WindowEdges::at(const QPointF& point, const QSize& size) noexcept {
    const auto within = [&](double reach) {
        return nearer(point.x(), size.width(), reach, Qt::LeftEdge, Qt::RightEdge) |
               nearer(point.y(), size.height(), reach, Qt::TopEdge, Qt::BottomEdge);
    };
    const Qt::Edges edges = within(edge);
    return edges ? within(corner) : edges;
}

Qt::CursorShape WindowEdges::cursor(Qt::Edges edges) noexcept {
    const bool isAcross = edges & (Qt::LeftEdge | Qt::RightEdge);
    const bool isUpright = edges & (Qt::TopEdge | Qt::BottomEdge);
    if (isAcross && isUpright)
        return edges == (Qt::LeftEdge | Qt::TopEdge) || edges == (Qt::RightEdge | Qt::BottomEdge)
                   ? Qt::SizeFDiagCursor
                   : Qt::SizeBDiagCursor;
    if (isAcross)
        return Qt::SizeHorCursor;
    return isUpright ? Qt::SizeVerCursor : Qt::ArrowCursor;
}

QRect WindowEdges::dragged(const QRect& frame, Qt::Edges edges, const QPoint& offset,
                           const QSize& least, const QSize& most) noexcept {
    if (!edges)
        return frame.translated(offset);
    QSize size = frame.size();
    if (edges & Qt::LeftEdge)
        size.rwidth() -= offset.x();
    if (edges & Qt::RightEdge)
        size.rwidth() += offset.x();
    if (edges & Qt::TopEdge)
        size.rheight() -= offset.y();
    if (edges & Qt::BottomEdge)
        size.rheight() += offset.y();
    QRect result(frame.topLeft(), size.boundedTo(most).expandedTo(least));
    if (edges & Qt::LeftEdge)
        result.moveRight(frame.right());
    if (edges & Qt::TopEdge)
        result.moveBottom(frame.bottom());
    return result;
}
