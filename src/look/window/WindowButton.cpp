#include "look/window/WindowButton.h"

#include "look/theme/CurrentTheme.h"
#include "look/window/QNToolTip.h"
#include "platform/text/Texts.h"

#include <QHelpEvent>
#include <QPainter>

namespace {

constexpr QSize usualSize(28, 26);

QString nameOf(WindowButton::Kind kind) {
    switch (kind) {
    case WindowButton::Kind::close:
        return Texts::tr("Close");
    case WindowButton::Kind::minimize:
        return Texts::tr("Minimize");
    case WindowButton::Kind::menu:
        return Texts::tr("Menu");
    }
    return {};
}

/// In a square of ten pixels around the origin.
void drawSign(QPainter& painter, WindowButton::Kind kind) {
    constexpr qreal half = 4.5;
    switch (kind) {
    case WindowButton::Kind::close:
        painter.drawLine(QLineF(-half, -half, half, half));
        painter.drawLine(QLineF(-half, half, half, -half));
        break;
    case WindowButton::Kind::minimize:
        painter.drawLine(QLineF(-half, half - 1, half, half - 1));
        break;
    case WindowButton::Kind::menu:
        for (const qreal y : {-4.0, 0.0, 4.0})
            painter.drawLine(QLineF(-half - 1, y, half + 1, y));
        break;
    }
}

} // namespace

WindowButton::WindowButton(Kind kind, QWidget* parent) : QAbstractButton(parent), kind_(kind) {
    setFocusPolicy(Qt::NoFocus); // the menu has keys for all of them
    setAttribute(Qt::WA_Hover);
    setAccessibleName(nameOf(kind));
}

QSize WindowButton::sizeHint() const {
    return usualSize;
}

bool WindowButton::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return QAbstractButton::event(event);
    QNToolTip::shared().setText(accessibleName());
    QNToolTip::shared().showAt(static_cast<const QHelpEvent*>(event)->globalPos(), *this);
    return true;
}

void WindowButton::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor color = CurrentTheme::theme().windowTitleBarTextColor();
    if (isDown() || underMouse()) {
        color.setAlphaF(isDown() ? 0.3F : 0.18F);
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 5, 5);
    }
    color.setAlphaF(isActiveWindow() || underMouse() ? 1.0F : 0.6F);
    painter.setPen(QPen(color, 1.6, Qt::SolidLine, Qt::RoundCap));
    painter.translate(QRectF(rect()).center());
    drawSign(painter, kind_);
}
