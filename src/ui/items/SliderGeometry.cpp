#include "ui/items/SliderGeometry.h"

#include <algorithm>
#include <cmath>

namespace {

/// Written so that not a number becomes 0: a slider may be no longer than its knob.
float clampedValue(double value) {
    const auto number = static_cast<float>(value);
    if (!(number > 0.0F))
        return 0.0F;
    return number < 1.0F ? number : 1.0F;
}

} // namespace

double SliderGeometry::along(const QPointF& point) const noexcept {
    return isVertical() ? bounds_.bottom() - point.y() : point.x() - bounds_.left();
}

QRectF SliderGeometry::fromAlong(double start, double length, double acrossStart,
                                 double acrossLength) const noexcept {
    if (isVertical())
        return {bounds_.left() + acrossStart, bounds_.bottom() - start - length, acrossLength,
                length};
    return {bounds_.left() + start, bounds_.top() + acrossStart, length, acrossLength};
}

QRectF SliderGeometry::knobRect(double value) const noexcept {
    const double across = isVertical() ? bounds_.width() : bounds_.height();
    const double start = std::floor((length() - knobSize) * value);
    return fromAlong(start, knobSize, (across - knobSize) / 2, knobSize);
}

double SliderGeometry::knobCenter(double value) const noexcept {
    return along(knobRect(value).center());
}

float SliderGeometry::valueAt(const QPointF& point) const noexcept {
    return clampedValue((along(point) - knobSize / 2) / (length() - knobSize));
}

float SliderGeometry::valueDragged(double startValue, const QPointF& start,
                                   const QPointF& point) const noexcept {
    return clampedValue(startValue + (along(point) - along(start)) / (length() - knobSize));
}

QRectF SliderGeometry::trackRect(double thickness) const noexcept {
    const double across = isVertical() ? bounds_.width() : bounds_.height();
    return fromAlong(0, length(), (across - thickness) / 2, thickness)
        .adjusted(0.5, 0.5, -0.5, -0.5);
}

QRectF SliderGeometry::piece(const QRectF& track, double start, double end,
                             double margin) const noexcept {
    if (isVertical())
        return {
            QPointF(track.left() - margin, bounds_.bottom() - end),
            QPointF(track.right() + margin, std::min(track.bottom(), bounds_.bottom() - start))};
    return {QPointF(std::max(track.left(), bounds_.left() + start), track.top() - margin),
            QPointF(bounds_.left() + end, track.bottom() + margin)};
}
