#include "look/window/WindowEdges.h"
#include "look/window/WindowPlacement.h"

#include <gtest/gtest.h>

using WindowPlacement::movedOnScreen;

TEST(WindowEdges, AreTakenHoldOfInANarrowFrameWithWideCorners) {
    const QSize size(500, 300);
    const struct {
        QPointF point;
        Qt::Edges edges;
        Qt::CursorShape cursor;
    } cases[] = {
        {{250, 150}, {}, Qt::ArrowCursor},
        {{5, 150}, {}, Qt::ArrowCursor},
        {{12, 12}, {}, Qt::ArrowCursor},
        {{4, 150}, Qt::LeftEdge, Qt::SizeHorCursor},
        {{499.5, 150}, Qt::RightEdge, Qt::SizeHorCursor},
        {{250, 0}, Qt::TopEdge, Qt::SizeVerCursor},
        {{250, 296}, Qt::BottomEdge, Qt::SizeVerCursor},
        {{2, 12}, Qt::LeftEdge | Qt::TopEdge, Qt::SizeFDiagCursor},
        {{488, 299}, Qt::RightEdge | Qt::BottomEdge, Qt::SizeFDiagCursor},
        {{12, 298}, Qt::LeftEdge | Qt::BottomEdge, Qt::SizeBDiagCursor},
        {{498, 12}, Qt::RightEdge | Qt::TopEdge, Qt::SizeBDiagCursor},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(testing::Message() << each.point.x() << ", " << each.point.y());
        EXPECT_EQ(WindowEdges::at(each.point, size), each.edges);
        EXPECT_EQ(WindowEdges::cursor(each.edges), each.cursor);
    }
}

TEST(WindowEdges, MoveWhileTheOppositeOnesStay) {
    const QRect frame(100, 100, 500, 300);
    const auto dragged = [&](Qt::Edges edges, const QPoint& way) {
        return WindowEdges::dragged(frame, edges, way, {400, 200}, {800, 400});
    };
    EXPECT_EQ(dragged({}, {7, -8}), QRect(107, 92, 500, 300));
    EXPECT_EQ(dragged(Qt::RightEdge | Qt::BottomEdge, {10, 20}), QRect(100, 100, 510, 320));
    EXPECT_EQ(dragged(Qt::LeftEdge | Qt::TopEdge, {10, 20}), QRect(110, 120, 490, 280));
    EXPECT_EQ(dragged(Qt::LeftEdge, {300, 0}), QRect(200, 100, 400, 300)) << "the least";
    EXPECT_EQ(dragged(Qt::TopEdge, {0, -300}), QRect(100, 0, 500, 400)) << "the most";
}

TEST(WindowPlacement, AFrameThatCanBeReachedStaysWhereItIs) {
    const QList<QRect> screens{{0, 30, 1280, 770}, {1280, 0, 800, 600}};
    for (const QRect& frame :
         {QRect(100, 100, 500, 300), QRect(-400, 100, 500, 300), QRect(1200, 700, 500, 300),
          QRect(2000, 570, 500, 300), QRect(0, 15, 500, 300)})
        EXPECT_EQ(movedOnScreen(frame, 30, screens), frame) << frame.x() << ", " << frame.y();
    EXPECT_EQ(movedOnScreen({9000, 9000, 500, 300}, 30, {}), QRect(9000, 9000, 500, 300));
}

TEST(WindowPlacement, AFrameOutOfReachComesToTheNearestScreenAndFitsIt) {
    const QList<QRect> screens{{0, 30, 1280, 770}, {1280, 0, 800, 600}};
    const struct {
        QRect frame;
        QRect place;
    } cases[] = {
        {{-480, 100, 500, 300}, {0, 100, 500, 300}},
        {{100, 10, 500, 300}, {100, 30, 500, 300}},
        {{5000, 5000, 500, 300}, {1580, 300, 500, 300}},
        {{-5000, 200, 3000, 2000}, {0, 30, 1280, 770}},
        {{100, 790, 500, 300}, {100, 500, 500, 300}},
    };
    for (const auto& each : cases)
        EXPECT_EQ(movedOnScreen(each.frame, 30, screens), each.place)
            << each.frame.x() << ", " << each.frame.y();
}
