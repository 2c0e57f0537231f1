#pragma once

#include "ui/items/FramePacer.h"
#include "ui/items/ItemControl.h"

#include <QPointF>

#include <functional>
#include <optional>

class MVBlackTheme;
class SliderGeometry;

/// A slider whose knob shows the volume, and a bar in its track the program's level. It runs along
/// its longer side, and starts where text lines start. Dragging moves the knob relative to the
/// press, and a press beside the knob makes it jump there; keys move it by whole percents. Volume
/// and level are fractions, 0 to 1. Main thread only.
class MVVolumeSlider : public ItemControl, private FramePacer::Client {
    Q_OBJECT

  public:
    /// Posted to the notification centre, with the slider as object, after the event that ended a
    /// drag has been handled; not if the slider has been destroyed by then.
    inline static const QString didReleaseMouseNotification =
        QStringLiteral("MVVolumeSliderDidReleaseMouseNotification");

    explicit MVVolumeSlider(QWidget* parent = nullptr);
    ~MVVolumeSlider() override;

    float floatValue() const noexcept { return value_; }

    /// Sets any value unchanged and calls the handler. Does not redraw.
    void setFloatValue(float value);

    /// Moves the knob without calling the handler; not during a drag.
    void showValue(float value);

    /// Sets the value like the end of a drag; with `sendTargetAction` the handler is called once
    /// more at the end.
    void setSliderValue_(float value, bool sendTargetAction);

    /// Moves the knob to `percent`, clamped to 0 to 100, and calls the handler, as keys and the
    /// wheel do. finishMove() ends the move like a drag; it does nothing without a move.
    void moveTo(int percent);
    void finishMove();
    int percent() const;

    /// Drawn with the pacer's next frame; not while the window is invisible.
    float activity() const noexcept { return activity_; }
    void setActivity(float activity);

    /// Null for none: levels are drawn at once. Must outlive its use.
    void setPacer(FramePacer* pacer);

    bool isMuted() const noexcept { return muted_; }
    void setMuted(bool muted);

    bool isInDrag() const noexcept { return drag_.has_value(); }

    /// Called on every change of the value; null for none.
    void setHandler(std::function<void()> handler) { handler_ = std::move(handler); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    /// The geometry of its parts at its current size.
    SliderGeometry geometryOfParts() const;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void leaveEvent(QEvent* event) override;

    [[nodiscard]] bool isHighlighted() const noexcept { return highlighted_; }
    [[nodiscard]] bool isKnobUnderMouse() const noexcept { return isKnobUnderMouse_; }
    static const MVBlackTheme& theme();

    virtual void drawTrack(QPainter& painter);
    virtual void drawKnob(QPainter& painter, const QRectF& rect);

    /// The length of the level's bar from the slider's start; 0 for no bar.
    [[nodiscard]] double levelEnd() const;
    [[nodiscard]] QColor levelColor() const;
    /// The end of the bar, in pixels: a light line, with a gap before it for high contrast, where
    /// line and bar may have one colour.
    static constexpr double levelTip = 4;
    static constexpr double levelTipLine = 3;
    void fillTrackPath(QPainter& painter, const QPainterPath& path, const QColor& base) const;

  private:
    struct Drag {
        double startValue;
        QPointF startPos;
    };

    void frame() override;
    void calcValue(const QPointF& point);
    void endDrag();
    void announceRelease();
    std::optional<int> stepOfKey(int key) const;
    bool isMirrored() const;
    QPointF fromStart(const QPointF& point) const;
    QRect levelChange(float before, float after) const;
    void drawLevel(QPainter& painter, const QRectF& track) const;
    void drawFocus(QPainter& painter, const QRectF& knob) const;
    void setKnobUnderMouse(bool isUnderMouse);
    bool isOnKnob(const QPointF& point) const;

    float value_ = 0.0F;
    float activity_ = 0.0F;
    float shownActivity_ = 0.0F; // what is drawn
    FramePacer* pacer_ = nullptr;
    bool isMoved_ = false; // by moveTo() since the last release
    bool muted_ = false;
    bool highlighted_ = false;
    bool isKnobUnderMouse_ = false;
    std::optional<Drag> drag_;
    std::function<void()> handler_;
};
