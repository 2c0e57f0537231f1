#include "look/window/Sign.h"

#include "look/theme/CurrentTheme.h"

#include <QPainter>
#include <QPainterPath>

namespace {

constexpr double middle = signSize / 2.0;
constexpr double stroke = 2.4;

QColor colorOf(Sign sign) {
    const MVBlackTheme& theme = CurrentTheme::theme();
    const QColor red(224, 72, 56);
    return sign == Sign::critical && !theme.isHighContrast() ? red
                                                             : theme.displayNameActivityColor();
}

void drawTriangle(QPainter& painter) {
    QPainterPath triangle;
    triangle.moveTo(middle, 2);
    triangle.lineTo(signSize - 1, signSize - 3);
    triangle.lineTo(1, signSize - 3);
    triangle.closeSubpath();
    painter.drawPath(triangle);
}

} // namespace

void drawSign(QPainter& painter, Sign sign, const QColor& background) {
    const QColor color = colorOf(sign);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(color);
    if (sign == Sign::warning)
        drawTriangle(painter);
    else
        painter.drawEllipse(QRectF(2, 2, signSize - 4, signSize - 4));
    painter.setPen(QPen(background, stroke, Qt::SolidLine, Qt::RoundCap));
    switch (sign) {
    case Sign::information:
        painter.drawPoint(QPointF(middle, 7));
        painter.drawLine(QPointF(middle, 11.5), QPointF(middle, 17));
        break;
    case Sign::warning:
        painter.drawLine(QPointF(middle, 9), QPointF(middle, 14));
        painter.drawPoint(QPointF(middle, 18));
        break;
    case Sign::critical:
        painter.drawLine(QPointF(8, 8), QPointF(16, 16));
        painter.drawLine(QPointF(8, 16), QPointF(16, 8));
        break;
    }
}
