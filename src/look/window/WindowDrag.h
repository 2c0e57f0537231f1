#pragma once

#include <QObject>
#include <QPointer>
#include <QRect>
#include <QWidget>
#include <QWindow>

#include <optional>

/// Moves a window that draws its own frame, and resizes it at its edges. The window system does it
/// if it can, with snapping and the like; otherwise the window follows the pointer. Main thread
/// only.
class WindowDrag final : public QObject {
    Q_OBJECT

  public:
    /// `window` is a top-level window and must outlive this.
    explicit WindowDrag(QWidget& window);

    /// Call it while the mouse button is down: moves the window until it is released.
    void startMove();

    /// Whether a move or a resize is in progress. One by the window system has ended when the
    /// window gets pointer events again.
    bool isUnderWay() const noexcept { return isWithSystem_ || own_; }

  Q_SIGNALS:
    void ended();

  private:
    /// A drag that we do ourselves.
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
