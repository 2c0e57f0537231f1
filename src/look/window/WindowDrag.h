#pragma once

#include <QObject>
#include <QPointer>
#include <QRect>
#include <QWidget>
#include <QWindow>

#include <optional>

/// Lets a person move a window that draws its own frame, and resize it at its edges. The window
/// system does it, with whatever it knows of other windows and screens; where it does not, the
/// window follows the pointer. Main thread only.
class WindowDrag final : public QObject {
    Q_OBJECT

  public:
    /// Of a window of its own, which must outlive this.
    explicit WindowDrag(QWidget& window);

    /// From a press of the mouse on: moves the window until it is released.
    void startMove();

    /// Whether a move or a resize has begun of which the end is not known yet. What the window
    /// system does is over when the window hears of the pointer again.
    bool isUnderWay() const noexcept { return isWithSystem_ || own_; }

  Q_SIGNALS:
    void ended();

  private:
    /// One that we do ourselves.
    struct Own {
        Qt::Edges edges;
        QRect frame; // at the press
    };

    bool eventFilter(QObject* watched, QEvent* event) override;
    bool press(const QMouseEvent& event);
    bool motion(const QMouseEvent& event);
    void begin(Qt::Edges edges);
    void end();
    Qt::Edges edgesAt(const QPointF& point) const;
    void showCursor(Qt::Edges edges);

    QWidget& window_;
    QPointer<QWindow> handle_;
    QPoint pressed_; // where the mouse was, on the desktop
    Qt::Edges shownEdges_;
    bool isWithSystem_ = false;
    std::optional<Own> own_;
};
