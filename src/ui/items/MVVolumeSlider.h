#pragma once

#include "ui/items/FramePacer.h"
#include "ui/items/ItemControl.h"

#include <QPointF>

#include <functional>
#include <optional>

class MVBlackTheme;
class SliderGeometry;

/// A slider that shows two things: the volume, by its knob, and how loud the program is, by a bar
/// in its track. It lies along its longer side, and begins where lines of text do. The mouse moves
/// the knob relative to where it took hold of it, and a press beside the knob makes it jump there;
/// keys move it by whole percents. Volume and level are fractions, 0 to 1. Main thread only.
class MVVolumeSlider : public ItemControl, private FramePacer::Client {
    Q_OBJECT

  public:
    /// Posted to the notification centre, with the slider as object, after the event that has ended
    /// a drag has been handled; not when the slider has gone by then.
    inline static const QString didReleaseMouseNotification =
        QStringLiteral("MVVolumeSliderDidReleaseMouseNotification");

    explicit MVVolumeSlider(QWidget* parent = nullptr);
    ~MVVolumeSlider() override;

    float floatValue() const noexcept { return value_; }

    /// Takes any value as it is and calls the handler. Does not redraw.
    void setFloatValue(float value);

    /// Moves the knob without the handler; not while a drag is under way.
    void showValue(float value);

    /// Sets the value as at the end of a drag; with `sendTargetAction` the handler is called once
    /// more at last.
    void setSliderValue_(float value, bool sendTargetAction);

    /// As keys and the wheel do: moves the knob to `percent`, 0 to 100 or the nearest of these, and
    /// calls the handler. finishMove() then is the end of a drag; it does nothing without a move.
    void moveTo(int percent);
    void finishMove();
    int percent() const;

    /// Drawn with the pacer's next frame; not at all while the window cannot be seen.
    float activity() const noexcept { return activity_; }
    void setActivity(float activity);

    /// Null for none: levels are drawn when they come. Must outlive its use.
    void setPacer(FramePacer* pacer);

    bool isMuted() const noexcept { return muted_; }
    void setMuted(bool muted);

    bool isInDrag() const noexcept { return drag_.has_value(); }

    /// Called on every change of the value; null for none.
    void setHandler(std::function<void()> handler) { handler_ = std::move(handler); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    /// How the parts lie in the slider as large as it is.
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

    bool isHighlighted() const noexcept { return highlighted_; }
    static const MVBlackTheme& theme();

    virtual void drawTrack(QPainter& painter);
    virtual void drawKnob(QPainter& painter, const QRectF& rect);

    /// How far from the slider's start the level's bar reaches; 0 for no bar.
    double levelEnd() const;
    QColor levelColor() const;
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

    float value_ = 0.0F;
    float activity_ = 0.0F;
    float shownActivity_ = 0.0F; // what is drawn
    FramePacer* pacer_ = nullptr;
    bool isMoved_ = false; // since the last end of a drag, without one
    bool muted_ = false;
    bool highlighted_ = false;
    std::optional<Drag> drag_;
    std::function<void()> handler_;
};
