#pragma once

#include "ui/items/MVVolumeSlider.h"

/// The volume slider as the window shows it: an inset dark track and a round bright knob. Main
/// thread only.
class TNVolumeSlider final : public MVVolumeSlider {
    Q_OBJECT

  public:
    using MVVolumeSlider::MVVolumeSlider;

    /// By a tenth of the whole, within 0 to 1, as assistive tools ask for it.
    void increment();
    void decrement();

  protected:
    void drawTrack(QPainter& painter) override;
    void drawKnob(QPainter& painter, const QRectF& rect) override;

  private:
    void drawLevel(QPainter& painter, const QRectF& track) const;
    void drawFullLevel(QPainter& painter, const QRectF& track, const QColor& color) const;
};
