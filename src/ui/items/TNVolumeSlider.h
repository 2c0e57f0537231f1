#pragma once

#include "ui/items/MVVolumeSlider.h"

/// The volume slider in the window's style: an inset dark track and a round bright knob. Main
/// thread only.
class TNVolumeSlider final : public MVVolumeSlider {
    Q_OBJECT

  public:
    using MVVolumeSlider::MVVolumeSlider;

    /// Move it by 0.1, within 0 to 1, for assistive tools.
    void increment();
    void decrement();

  protected:
    void drawTrack(QPainter& painter) override;
    void drawKnob(QPainter& painter, const QRectF& rect) override;

  private:
    void drawLevel(QPainter& painter, const QRectF& track) const;
    void drawFullLevel(QPainter& painter, const QRectF& track, const QColor& color) const;
};
