#include "ui/items/MVVolumeSlider.h"

#include "look/theme/CurrentTheme.h"
#include "look/theme/LighterColor.h"
#include "model/ChangeSource.h"
#include "model/VolumeConversion.h"
#include "platform/bus/NotificationCenter.h"
#include "platform/loop/DispatchQueue.h"
#include "ui/items/SliderGeometry.h"

#include <QAccessible>
#include <QKeyEvent>
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

/// How many percents a key moves a slider, whose value grows in the direction of `more`; nothing
/// for any other key.
std::optional<int> stepOf(int key, Qt::Key more, Qt::Key less) {
    constexpr int step = 1;
    constexpr int page = 10;
    if (key == more || key == less)
        return key == more ? step : -step;
    switch (key) {
    case Qt::Key_PageDown:
        return -page;
    case Qt::Key_PageUp:
        return page;
    case Qt::Key_Home:
        return -VolumeConversion::full;
    case Qt::Key_End:
        return VolumeConversion::full;
    default:
        return std::nullopt;
    }
}

} // namespace

MVVolumeSlider::MVVolumeSlider(QWidget* parent) : ItemControl(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true); // for the knob
}

MVVolumeSlider::~MVVolumeSlider() {
    setPacer(nullptr);
}

const MVBlackTheme& MVVolumeSlider::theme() {
    return CurrentTheme::theme();
}

SliderGeometry MVVolumeSlider::geometryOfParts() const {
    return SliderGeometry(QRectF(rect()));
}

/// The geometry knows of one direction only.
bool MVVolumeSlider::isMirrored() const {
    return layoutDirection() == Qt::RightToLeft && !geometryOfParts().isVertical();
}

QPointF MVVolumeSlider::fromStart(const QPointF& point) const {
    return isMirrored() ? QPointF(width() - point.x(), point.y()) : point;
}

QSize MVVolumeSlider::sizeHint() const {
    return {usualLength, static_cast<int>(SliderGeometry::knobSize)};
}

QSize MVVolumeSlider::minimumSizeHint() const {
    return {leastLength, static_cast<int>(SliderGeometry::knobSize)};
}

void MVVolumeSlider::setFloatValue(float value) {
    const bool isAnother = std::exchange(value_, value) != value;
    if (isAnother && QAccessible::isActive()) {
        QAccessibleValueChangeEvent event(this, static_cast<double>(value));
        QAccessible::updateAccessibility(&event);
    }
    if (const auto handler = handler_)
        handler();
}

void MVVolumeSlider::showValue(float value) {
    if (isInDrag() || value == value_)
        return;
    value_ = value;
    update();
}

void MVVolumeSlider::setSliderValue_(float value, bool sendTargetAction) {
    setFloatValue(value);
    announceRelease();
    if (const auto handler = handler_; sendTargetAction && handler)
        handler();
}

void MVVolumeSlider::announceRelease() {
    platform::DispatchQueue::main()->async([self = QPointer<MVVolumeSlider>(this)] {
        if (self != nullptr)
            platform::NotificationCenter::standard().post(
                didReleaseMouseNotification, QVariant::fromValue<QObject*>(self.data()));
    });
}

void MVVolumeSlider::setPacer(FramePacer* pacer) {
    if (pacer_ != nullptr && pacer_ != pacer)
        pacer_->withdraw(*this);
    pacer_ = pacer;
}

/// A window that becomes visible is repainted as a whole, so an invisible one needs no updates.
void MVVolumeSlider::setActivity(float activity) {
    activity_ = activity;
    if (!isVisible() || !updatesEnabled())
        shownActivity_ = activity;
    else if (activity == shownActivity_)
        return;
    else if (pacer_ != nullptr)
        pacer_->request(*this);
    else
        frame();
}

void MVVolumeSlider::frame() {
    const float before = std::exchange(shownActivity_, activity_);
    if (before != activity_)
        update(levelChange(before, activity_));
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
    const auto [least, most] =
        std::minmax({center * static_cast<double>(before), center * static_cast<double>(after)});
    const QRectF across = parts.trackRect(trackThickness + 4);
    const double start = std::max(0.0, least - radius - levelTip - 2);
    const QRect change = parts.piece(across, start, most + 1).toAlignedRect();
    return isMirrored() ? change.translated(width() - change.left() - change.right() - 1, 0)
                        : change;
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
    const QPointF point = fromStart(event->position());
    if (!isOnKnob(point))
        setFloatValue(parts.valueAt(point));
    drag_ = Drag{static_cast<double>(value_), point};
    highlighted_ = true;
    calcValue(point);
    update();
}

void MVVolumeSlider::mouseMoveEvent(QMouseEvent* event) {
    setKnobUnderMouse(isInDrag() || isOnKnob(fromStart(event->position())));
    if (!isInDrag()) {
        event->ignore();
        return;
    }
    highlighted_ = true;
    calcValue(fromStart(event->position()));
    update();
}

void MVVolumeSlider::mouseReleaseEvent(QMouseEvent* event) {
    if (!isInDrag() || event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    calcValue(fromStart(event->position()));
    endDrag();
}

void MVVolumeSlider::endDrag() {
    if (!isInDrag())
        return;
    highlighted_ = false;
    drag_.reset();
    setSliderValue_(value_, false);
    update();
}

/// A slider that is taken away from the mouse gets no release.
void MVVolumeSlider::changeEvent(QEvent* event) {
    if (event->type() == QEvent::EnabledChange) {
        endDrag();
        update();
    }
    if (event->type() == QEvent::LayoutDirectionChange)
        update();
    QWidget::changeEvent(event);
}

void MVVolumeSlider::hideEvent(QHideEvent* /*event*/) {
    endDrag();
}

void MVVolumeSlider::leaveEvent(QEvent* /*event*/) {
    setKnobUnderMouse(false);
}

bool MVVolumeSlider::isOnKnob(const QPointF& point) const {
    return geometryOfParts().knobRect(static_cast<double>(value_)).contains(point);
}

void MVVolumeSlider::setKnobUnderMouse(bool isUnderMouse) {
    if (std::exchange(isKnobUnderMouse_, isUnderMouse) != isUnderMouse)
        update();
}

int MVVolumeSlider::percent() const {
    return VolumeConversion::percentOfFraction(static_cast<double>(value_));
}

void MVVolumeSlider::moveTo(int percent) {
    isMoved_ = true;
    setFloatValue(VolumeConversion::fractionForPercent(percent));
    update();
}

void MVVolumeSlider::finishMove() {
    if (std::exchange(isMoved_, false))
        announceRelease();
}

std::optional<int> MVVolumeSlider::stepOfKey(int key) const {
    return geometryOfParts().isVertical() ? stepOf(key, Qt::Key_Up, Qt::Key_Down)
           : isMirrored()                 ? stepOf(key, Qt::Key_Left, Qt::Key_Right)
                                          : stepOf(key, Qt::Key_Right, Qt::Key_Left);
}

/// As a drag: the knob follows while the key is down, and is released with it.
void MVVolumeSlider::keyPressEvent(QKeyEvent* event) {
    const auto step = stepOfKey(event->key());
    if (!step || isInDrag() || event->modifiers() & ~Qt::KeypadModifier) {
        event->ignore();
        return;
    }
    showKeyFocus(true);
    const ChangeSource source(ChangeSource::Kind::key);
    moveTo(percent() + *step);
}

void MVVolumeSlider::keyReleaseEvent(QKeyEvent* event) {
    if (!event->isAutoRepeat() && stepOfKey(event->key()))
        finishMove();
    else
        event->ignore();
}

void MVVolumeSlider::focusOutEvent(QFocusEvent* event) {
    finishMove();
    ItemControl::focusOutEvent(event);
}

void MVVolumeSlider::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(0.4);
    if (isMirrored()) {
        painter.translate(width(), 0);
        painter.scale(-1, 1);
    }
    drawTrack(painter);
    const QRectF knob = geometryOfParts().knobRect(static_cast<double>(value_));
    drawKnob(painter, knob);
    if (hasKeyFocus())
        drawFocus(painter, knob);
}

void MVVolumeSlider::drawFocus(QPainter& painter, const QRectF& knob) const {
    const QPen pen = focusPen();
    const auto ring = [&](const QPen& line, double inside) {
        painter.setPen(line);
        painter.drawEllipse(knob.adjusted(inside, inside, -inside, -inside));
    };
    painter.setBrush(Qt::NoBrush);
    if (!theme().isHighContrast()) // where there is a gap
        ring(QPen(theme().sliderKnobShadowColor(), 1.5), pen.widthF() + 0.75);
    ring(pen, pen.widthF() / 2);
}

double MVVolumeSlider::levelEnd() const {
    return geometryOfParts().knobCenter(static_cast<double>(value_)) *
           static_cast<double>(shownActivity_);
}

QColor MVVolumeSlider::levelColor() const {
    return muted_ ? theme().sliderTrackBottomActivityMutedBaseColor()
                  : theme().sliderTrackBottomActivityBaseColor();
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
                  shownActivity_ > 0 ? theme().sliderTrackTopActivityBaseColor()
                                     : theme().sliderTrackTopBaseColor());
    if (shownActivity_ > 0)
        drawLevel(painter, track);
}

/// The bar may be seen from the start of the track to the knob's centre. Its tip is what a shorter
/// one leaves free.
void MVVolumeSlider::drawLevel(QPainter& painter, const QRectF& track) const {
    const SliderGeometry parts = geometryOfParts();
    const double center = parts.knobCenter(static_cast<double>(value_));
    QPainterPath clip;
    clip.addRoundedRect(parts.piece(track, 0, center, 1), radius, radius);
    QPainterPath tip;
    tip.addRoundedRect(parts.piece(track, 0, levelEnd()), radius, radius);
    QPainterPath bar;
    bar.addRoundedRect(parts.piece(track, 0, std::max(0.0, levelEnd() - levelTipLine)), radius,
                       radius);
    painter.save();
    painter.setClipPath(clip);
    painter.fillPath(tip, theme().levelTipColor());
    fillTrackPath(painter, bar, levelColor());
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
