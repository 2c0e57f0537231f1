#pragma once

#include <QBasicTimer>
#include <QWidget>

/// At the end of an item's name line: the percent in figures of equal width, before it the word for
/// muted, and a sign while the program plays. The space of the figures and of the sign is always
/// kept, so that nothing moves when they change. Brighter for a moment after a change, and while
/// it is lit. Hidden from assistive tools, which get all of it from the slider and the item. Main
/// thread only.
class ItemStatus final : public QWidget {
    Q_OBJECT

  public:
    struct State {
        int percent = 0;
        bool isMuted = false;
        bool isPlaying = false;
        bool isControllable = true; ///< else the figures cannot be pressed
        bool operator==(const State&) const = default;
    };

    explicit ItemStatus(QWidget* parent = nullptr);

    const State& state() const noexcept { return state_; }
    void setState(const State& state);

    /// While the row has the mouse or the focus.
    void setLit(bool isLit);

    /// As wide as its state needs.
    QSize sizeHint() const override;

    /// The place of the figures, which open a field when they are pressed.
    QRect percentPlace() const;

  Q_SIGNALS:
    void sizeChanged();
    void percentPressed();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    bool event(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

  private:
    bool isPressable(const QPoint& place) const;
    void setUnderMouse(bool isUnderMouse);
    void drawPercent(QPainter& painter, const QRect& place) const;
    void drawSign(QPainter& painter, const QRect& place) const;
    QColor color() const;

    State state_;
    bool isLit_ = false;
    bool isPercentUnderMouse_ = false;
    QBasicTimer bright_; // runs for a moment after a change
};
