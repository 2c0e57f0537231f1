#include "look/window/MVScroller.h"

#include "look/theme/CurrentTheme.h"
#include "look/theme/LighterColor.h"

#include <QLinearGradient>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>

namespace {

constexpr int thickness = 14;
constexpr qreal margin = 3;

QLinearGradient across(const QRectF& box, Qt::Orientation orientation, const QColor& first,
                       const QColor& last) {
    QLinearGradient gradient(box.topLeft(),
                             orientation == Qt::Vertical ? box.topRight() : box.bottomLeft());
    gradient.setColorAt(0, first);
    gradient.setColorAt(1, last);
    return gradient;
}

} // namespace

MVScroller::MVScroller(Qt::Orientation orientation, QWidget* parent)
    : QScrollBar(orientation, parent) {
    setAttribute(Qt::WA_Hover);
}

QSize MVScroller::sizeHint() const {
    const QSize usual = QScrollBar::sizeHint();
    return orientation() == Qt::Vertical ? QSize(thickness, usual.height())
                                         : QSize(usual.width(), thickness);
}

/// The knob is where the style takes hold of it.
void MVScroller::paintEvent(QPaintEvent* /*event*/) {
    const MVBlackTheme& theme = CurrentTheme::theme();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF all(rect());
    painter.fillRect(all, theme.scrollerTrackBackgroundColor());
    painter.fillRect(all, across(all, orientation(), theme.scrollerBackgroundGradientColor1(),
                                 theme.scrollerBackgroundGradientColor2()));
    if (maximum() == minimum())
        return;
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRectF knob = QRectF(style()->subControlRect(QStyle::CC_ScrollBar, &option,
                                                       QStyle::SC_ScrollBarSlider, this))
                            .adjusted(margin, margin, -margin, -margin);
    const double radius = std::min(knob.width(), knob.height()) / 2;
    painter.setPen(
        QPen(lighterBy(theme.scrollerKnobGradientColor1(), underMouse() ? 0.3 : 0.15), 1));
    painter.setBrush(across(knob, orientation(), theme.scrollerKnobGradientColor1(),
                            theme.scrollerKnobGradientColor2()));
    painter.drawRoundedRect(knob, radius, radius);
}
