#pragma once

#include <QPointF>
#include <QRectF>

/// Where the parts of a volume slider are. It lies along its longer side: horizontal, with 0 on the
/// left, or vertical, with 0 at the bottom. A widget's coordinates are those of Qt; a place along
/// the slider is counted in pixels from its start, where the value is 0.
class SliderGeometry {
  public:
    /// The knob is a square of this many pixels.
    static constexpr double knobSize = 20;

    explicit SliderGeometry(const QRectF& bounds) noexcept : bounds_(bounds) {}

    bool isVertical() const noexcept { return bounds_.height() > bounds_.width(); }
    double length() const noexcept { return isVertical() ? bounds_.height() : bounds_.width(); }
    double along(const QPointF& point) const noexcept;

    /// On whole pixels along the slider.
    QRectF knobRect(double value) const noexcept;
    double knobCenter(double value) const noexcept;

    /// Of a knob whose centre is pulled to `point`.
    float valueAt(const QPointF& point) const noexcept;

    /// After a drag from `start`, where the value was `startValue`, to `point`.
    float valueDragged(double startValue, const QPointF& start,
                       const QPointF& point) const noexcept;

    /// The whole length and `thickness` across, half a pixel within, so that a line of one pixel
    /// around it is sharp.
    QRectF trackRect(double thickness) const noexcept;

    /// What of `track` lies between the places `start` and `end`, with `margin` more on each side
    /// across. Place 0 is where the track itself starts.
    QRectF piece(const QRectF& track, double start, double end, double margin = 0) const noexcept;

  private:
    QRectF fromAlong(double start, double length, double acrossStart,
                     double acrossLength) const noexcept;

    const QRectF bounds_;
};
