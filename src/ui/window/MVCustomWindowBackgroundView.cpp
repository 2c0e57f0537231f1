#include "ui/window/MVCustomWindowBackgroundView.h"

#include "ui/theme/CurrentTheme.h"

#include <QEvent>
#include <QLinearGradient>
#include <QPainter>

MVCustomWindowBackgroundView::MVCustomWindowBackgroundView(int titleBar, QWidget* parent)
    : QWidget(parent), titleBar_(titleBar) {
    setAttribute(Qt::WA_OpaquePaintEvent);
}

/// The bar of the active window is the lighter one.
void MVCustomWindowBackgroundView::paintEvent(QPaintEvent* /*event*/) {
    const MVBlackTheme& theme = CurrentTheme::theme();
    QPainter painter(this);
    painter.fillRect(rect(), theme.windowTitleBarGradientColor1());
    if (isActiveWindow()) {
        QLinearGradient gradient(0, titleBar_, 0, 0);
        gradient.setColorAt(0, theme.windowTitleBarGradientColor1());
        gradient.setColorAt(1, theme.windowTitleBarGradientColor2());
        painter.fillRect(QRect(0, 0, width(), titleBar_), gradient);
    }
    painter.setPen(theme.isHighContrast() ? theme.windowTitleBarTextColor()
                                          : theme.windowTitleBarGradientColor2());
    if (theme.isHighContrast())
        painter.drawLine(0, titleBar_ - 1, width(), titleBar_ - 1);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void MVCustomWindowBackgroundView::changeEvent(QEvent* event) {
    if (event->type() == QEvent::ActivationChange)
        update();
    QWidget::changeEvent(event);
}
