#include "look/window/MVScroller.h"

#include "look/theme/CurrentTheme.h"

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

QColor mixed(const QColor& first, const QColor& last, float part) {
    const auto mix = [part](float one, float other) { return one + (other - one) * part; };
    return QColor::fromRgbF(mix(first.redF(), last.redF()), mix(first.greenF(), last.greenF()),
                            mix(first.blueF(), last.blueF()));
}

/// The same for a whole bar, line by line. Qt would share a gradient of so many rows out to threads
/// and wait for them, with each frame.
void fillAcross(QPainter& painter, const QRect& box, Qt::Orientation orientation,
                const QColor& first, const QColor& last) {
    const bool isVertical = orientation == Qt::Vertical;
    const int lines = isVertical ? box.width() : box.height();
    for (int i = 0; i < lines; ++i) {
        const QRect line = isVertical ? QRect(box.left() + i, box.top(), 1, box.height())
                                      : QRect(box.left(), box.top() + i, box.width(), 1);
        painter.fillRect(
            line, mixed(first, last, (static_cast<float>(i) + 0.5F) / static_cast<float>(lines)));
    }
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
    painter.fillRect(rect(), theme.scrollerTrackBackgroundColor());
    fillAcross(painter, rect(), orientation(), theme.scrollerBackgroundGradientColor1(),
               theme.scrollerBackgroundGradientColor2());
    if (maximum() == minimum())
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRectF knob = QRectF(style()->subControlRect(QStyle::CC_ScrollBar, &option,
                                                       QStyle::SC_ScrollBarSlider, this))
                            .adjusted(margin, margin, -margin, -margin);
    constexpr qreal inside = 0.5; // so that the edge lies on whole pixels
    const double radius = std::min(knob.width(), knob.height()) / 2;
    painter.setPen(QPen(theme.scrollerKnobEdgeColor(underMouse() || isSliderDown()), 1));
    painter.setBrush(across(knob, orientation(), theme.scrollerKnobGradientColor1(),
                            theme.scrollerKnobGradientColor2()));
    painter.drawRoundedRect(knob.adjusted(inside, inside, -inside, -inside), radius, radius);
}
