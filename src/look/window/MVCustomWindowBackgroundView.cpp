#include "look/window/MVCustomWindowBackgroundView.h"

#include "look/theme/CurrentTheme.h"

#include <QLinearGradient>
#include <QPainter>

MVCustomWindowBackgroundView::MVCustomWindowBackgroundView(int titleBar, QWidget* parent)
    : QWidget(parent), titleBar_(titleBar) {
    setAttribute(Qt::WA_OpaquePaintEvent);
}

/// The bar of the active window is the lighter one. Lines are filled, since a pen misses pixels at
/// an edge of a dense screen.
void MVCustomWindowBackgroundView::paintEvent(QPaintEvent* /*event*/) {
    const MVBlackTheme& theme = CurrentTheme::theme();
    QPainter painter(this);
    const QRect inside = rect().adjusted(border, border, -border, -border);
    const QColor line = theme.isHighContrast() ? theme.windowTitleBarTextColor()
                                               : theme.windowTitleBarGradientColor2();
    painter.fillRect(rect(), line);
    painter.fillRect(inside, theme.windowTitleBarGradientColor1());
    if (isActiveWindow()) {
        QLinearGradient gradient(0, titleBar_, 0, 0);
        gradient.setColorAt(0, theme.windowTitleBarGradientColor1());
        gradient.setColorAt(1, theme.windowTitleBarGradientColor2());
        painter.fillRect(inside.intersected({0, 0, width(), titleBar_}), gradient);
    }
    if (theme.isHighContrast())
        painter.fillRect(0, titleBar_ - border, width(), border, line);
}
