#include "ui/items/MVVolumeSlider.h"

#include "platform/DispatchQueue.h"
#include "platform/NotificationCenter.h"
#include "ui/items/SliderGeometry.h"
#include "ui/theme/LighterColor.h"
#include "ui/theme/MVOrangeBrownTheme.h"

#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>

#include <algorithm>

namespace {

constexpr double trackThickness = 10;
constexpr double radius = 5;
constexpr int usualLength = 220;
constexpr int leastLength = 80;

} // namespace

MVVolumeSlider::MVVolumeSlider(QWidget* parent) : QWidget(parent) {}

MVVolumeSlider::~MVVolumeSlider() = default;

const MVBlackTheme& MVVolumeSlider::theme() {
    return MVOrangeBrownTheme::sharedTheme();
}

SliderGeometry MVVolumeSlider::geometryOfParts() const {
    return SliderGeometry(QRectF(rect()));
}

QSize MVVolumeSlider::sizeHint() const {
    return {usualLength, static_cast<int>(SliderGeometry::knobSize)};
}

QSize MVVolumeSlider::minimumSizeHint() const {
    return {leastLength, static_cast<int>(SliderGeometry::knobSize)};
}

void MVVolumeSlider::setFloatValue(float value) {
    value_ = value;
    if (const auto handler = handler_)
        handler();
}

void MVVolumeSlider::showValue(float value) {
    if (isInDrag() || value == value_)
        return;
    value_ = value;
    update();
}

void MVVolumeSlider::setSliderValue(float value, bool sendTargetAction) {
    setFloatValue(value);
    platform::DispatchQueue::main()->async([self = QPointer<MVVolumeSlider>(this)] {
        if (self != nullptr)
            platform::NotificationCenter::standard().post(
                didReleaseMouseNotification, QVariant::fromValue<QObject*>(self.data()));
    });
    if (const auto handler = handler_; sendTargetAction && handler)
        handler();
}

void MVVolumeSlider::setActivity(float activity) {
    const float before = std::exchange(activity_, activity);
    if (before != activity)
        update(levelChange(before, activity));
}

void MVVolumeSlider::setMuted(bool muted) {
    if (std::exchange(muted_, muted) != muted)
        update();
}

/// Between the two ends of the bar, with its round end; everything when the track's colour changes.
QRect MVVolumeSlider::levelChange(float before, float after) const {
    if ((before > 0) != (after > 0))
        return rect();
    const SliderGeometry parts = geometryOfParts();
    const double center = parts.knobCenter(static_cast<double>(value_));
    const auto [least, most] = std::minmax(center * static_cast<double>(before),
                                           center * static_cast<double>(after));
    const QRectF all(rect());
    const QRectF untilMost = parts.trackUntil(all, most + 1);
    const QRectF untilLeast = parts.trackUntil(all, std::max(0.0, least - radius - 1));
    QRectF change = untilMost;
    if (parts.isVertical())
        change.setBottom(untilLeast.top());
    else
        change.setLeft(untilLeast.right());
    return change.toAlignedRect();
}

void MVVolumeSlider::calcValue(const QPointF& point) {
    setFloatValue(geometryOfParts().valueDragged(drag_->startValue, drag_->startPos, point));
}

void MVVolumeSlider::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    const SliderGeometry parts = geometryOfParts();
    const QPointF point = event->position();
    if (!parts.knobRect(static_cast<double>(value_)).contains(point))
        setFloatValue(parts.valueAt(point));
    drag_ = Drag{static_cast<double>(value_), point};
    highlighted_ = true;
    calcValue(point);
    update();
}

void MVVolumeSlider::mouseMoveEvent(QMouseEvent* event) {
    if (!isInDrag()) {
        event->ignore();
        return;
    }
    highlighted_ = true;
    calcValue(event->position());
    update();
}

void MVVolumeSlider::mouseReleaseEvent(QMouseEvent* event) {
    if (!isInDrag() || event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    highlighted_ = false;
    calcValue(event->position());
    drag_.reset();
    setSliderValue(value_, false);
    update();
}

void MVVolumeSlider::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(0.4);
    drawTrack(painter);
    drawKnob(painter, geometryOfParts().knobRect(static_cast<double>(value_)));
}

QColor MVVolumeSlider::levelColor() const {
    return muted_ ? theme().sliderTrackBottomActivityMutedBaseColor()
                  : theme().sliderTrackBottomActivityBaseColor();
}

QPainterPath MVVolumeSlider::levelPath(const QRectF& track) const {
    const SliderGeometry parts = geometryOfParts();
    const double end =
        parts.knobCenter(static_cast<double>(value_)) * static_cast<double>(activity_);
    QPainterPath path;
    path.addRoundedRect(parts.trackUntil(track, end), radius, radius);
    return path;
}

QPainterPath MVVolumeSlider::levelClip(const QRectF& track, double margin) const {
    const SliderGeometry parts = geometryOfParts();
    QPainterPath path;
    path.addRoundedRect(
        parts.trackUntil(track, parts.knobCenter(static_cast<double>(value_)), margin), radius,
        radius);
    return path;
}

/// The gradient runs upwards, or from left to right.
void MVVolumeSlider::fillTrackPath(QPainter& painter, const QPainterPath& path,
                                   const QColor& base) const {
    const QRectF box = path.boundingRect();
    QLinearGradient gradient = geometryOfParts().isVertical()
                                   ? QLinearGradient(box.topLeft(), box.topRight())
                                   : QLinearGradient(box.bottomLeft(), box.topLeft());
    gradient.setColorAt(0, base);
    gradient.setColorAt(1, lighterBy(base, 0.15));
    painter.fillPath(path, gradient);
    painter.strokePath(path, QPen(lighterBy(base, 0.1), 1));
}

void MVVolumeSlider::drawTrack(QPainter& painter) {
    const QRectF track = geometryOfParts().trackRect(trackThickness);
    QPainterPath path;
    path.addRoundedRect(track, radius, radius);
    fillTrackPath(painter, path,
                  activity_ > 0 ? theme().sliderTrackTopActivityBaseColor()
                                : theme().sliderTrackTopBaseColor());
    if (!(activity_ > 0))
        return;
    painter.save();
    painter.setClipPath(levelClip(track, 1));
    fillTrackPath(painter, levelPath(track), levelColor());
    painter.restore();
}

void MVVolumeSlider::drawKnob(QPainter& painter, const QRectF& rect) {
    const QRectF knob = rect.adjusted(1, 1, -1, -1);
    QLinearGradient gradient(knob.bottomLeft(), knob.topLeft());
    gradient.setColorAt(0, highlighted_ ? theme().sliderKnobGradientColor1Highlighted()
                                        : theme().sliderKnobGradientColor1());
    gradient.setColorAt(1, highlighted_ ? theme().sliderKnobGradientColor2Highlighted()
                                        : theme().sliderKnobGradientColor2());
    painter.setBrush(gradient);
    painter.setPen(QPen(theme().sliderKnobShadowColor(), 1));
    painter.drawEllipse(knob.adjusted(0.5, 0.5, -0.5, -0.5));
}
