#pragma once

#include <QPointF>
#include <QRectF>

/// The geometry of a volume slider. It runs along its longer side: horizontal, with 0 on the left,
/// or vertical, with 0 at the bottom. Points are in Qt's widget coordinates; positions along the
/// slider are in pixels from its start, where the value is 0.
class SliderGeometry {
  public:
    /// The knob is a square of this many pixels.
    static constexpr double knobSize = 20;

    explicit SliderGeometry(const QRectF& bounds) noexcept : bounds_(bounds) {}

    [[nodiscard]] bool isVertical() const noexcept { return bounds_.height() > bounds_.width(); }
    [[nodiscard]] double length() const noexcept {
        return isVertical() ? bounds_.height() : bounds_.width();
    }
    [[nodiscard]] double along(const QPointF& point) const noexcept;

    /// Aligned to whole pixels along the slider.
    [[nodiscard]] QRectF knobRect(double value) const noexcept;
    [[nodiscard]] double knobCenter(double value) const noexcept;

    /// The value if the knob's centre is dragged to `point`.
    [[nodiscard]] float valueAt(const QPointF& point) const noexcept;

    /// The value after a drag from `start`, where it was `startValue`, to `point`.
    [[nodiscard]] float valueDragged(double startValue, const QPointF& start,
                                     const QPointF& point) const noexcept;

    /// The track: the whole length and `thickness` across, inset by half a pixel, so that an
    /// outline of one pixel is sharp.
    [[nodiscard]] QRectF trackRect(double thickness) const noexcept;

    /// The part of `track` between the positions `start` and `end`, extended by `margin` on each
    /// side across. Position 0 is the start of the track.
    [[nodiscard]] QRectF piece(const QRectF& track, double start, double end,
                               double margin = 0) const noexcept;

  private:
    QRectF fromAlong(double start, double length, double acrossStart,
                     double acrossLength) const noexcept;

    const QRectF bounds_;
};
