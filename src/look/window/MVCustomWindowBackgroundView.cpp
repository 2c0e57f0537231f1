#include "look/window/MVCustomWindowBackgroundView.h"

#include "look/theme/CurrentTheme.h"
#include "look/theme/LighterColor.h"
#include "platform/window/WindowPositioning.h"

#include <QLinearGradient>
#include <QPainter>

namespace {

/// Where the window system draws no shadow around the window, its edge has to be lighter than what
/// may lie below it.
QColor edgeColor(const MVBlackTheme& theme) {
    constexpr double lighter = 0.35;
    if (theme.isHighContrast())
        return theme.windowTitleBarTextColor();
    const QColor line = theme.windowTitleBarGradientColor2();
    return platform::canPositionWindows() ? line : lighterBy(line, lighter);
}

} // namespace

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
    const QColor line = edgeColor(theme);
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
