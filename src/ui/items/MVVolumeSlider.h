#pragma once

#include <QPointF>
#include <QWidget>

#include <functional>
#include <optional>

class MVBlackTheme;
class SliderGeometry;

/// A slider that shows two things: the volume, by its knob, and how loud the program is, by a bar
/// in its track. It lies along its longer side. The mouse moves the knob relative to where it took
/// hold of it, and a press beside the knob makes it jump there. Volume and level are fractions, 0
/// to 1. Main thread only.
class MVVolumeSlider : public QWidget {
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
    void setSliderValue(float value, bool sendTargetAction);

    float activity() const noexcept { return activity_; }
    void setActivity(float activity);

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

    bool isHighlighted() const noexcept { return highlighted_; }
    static const MVBlackTheme& theme();

    virtual void drawTrack(QPainter& painter);
    virtual void drawKnob(QPainter& painter, const QRectF& rect);

    /// The outline of the level's bar, from the start of `track`, and where it may be seen.
    QPainterPath levelPath(const QRectF& track) const;
    QPainterPath levelClip(const QRectF& track, double margin) const;
    QColor levelColor() const;
    void fillTrackPath(QPainter& painter, const QPainterPath& path, const QColor& base) const;

  private:
    struct Drag {
        double startValue;
        QPointF startPos;
    };

    void calcValue(const QPointF& point);
    QRect levelChange(float before, float after) const;

    float value_ = 0.0F;
    float activity_ = 0.0F;
    bool muted_ = false;
    bool highlighted_ = false;
    std::optional<Drag> drag_;
    std::function<void()> handler_;
};
