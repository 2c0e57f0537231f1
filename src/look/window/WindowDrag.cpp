#include "look/window/WindowDrag.h"

#include "look/window/WindowEdges.h"

#include <QMouseEvent>

#include <utility>

WindowDrag::WindowDrag(QWidget& window) : window_(window) {
    window.installEventFilter(this);
}

/// The native window gets mouse events before the widgets in it.
bool WindowDrag::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &window_) {
        if (event->type() == QEvent::Show && handle_ != window_.windowHandle()) {
            handle_ = window_.windowHandle();
            handle_->installEventFilter(this);
        }
        return false;
    }
    if (watched != handle_)
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        return press(static_cast<const QMouseEvent&>(*event));
    case QEvent::MouseMove:
        return motion(static_cast<const QMouseEvent&>(*event));
    case QEvent::MouseButtonRelease: {
        const bool wasOurs = own_.has_value();
        end();
        return wasOurs;
    }
    case QEvent::Enter:
    case QEvent::KeyPress:
        if (isWithSystem_)
            end();
        return false;
    default:
        return false;
    }
}

bool WindowDrag::press(const QMouseEvent& event) {
    pressed_ = event.globalPosition().toPoint();
    const Qt::Edges edges = edgesAt(event.position());
    if (event.button() != Qt::LeftButton || !edges)
        return false;
    begin(edges);
    return true;
}

bool WindowDrag::motion(const QMouseEvent& event) {
    if (own_) {
        const QPoint offset = event.globalPosition().toPoint() - pressed_;
        window_.setGeometry(WindowEdges::dragged(own_->frame, own_->edges, offset,
                                                 window_.minimumSize(), window_.maximumSize()));
        return true;
    }
    if (event.buttons() != Qt::NoButton)
        return false;
    if (isWithSystem_)
        end();
    const Qt::Edges edges = edgesAt(event.position());
    showCursor(edges);
    return edges != Qt::Edges();
}

Qt::Edges WindowDrag::edgesAt(const QPointF& point) const {
    return window_.isMaximized() || window_.isFullScreen() ||
                   window_.minimumSize() == window_.maximumSize()
               ? Qt::Edges()
               : WindowEdges::at(point, window_.size());
}

void WindowDrag::showCursor(Qt::Edges edges) {
    if (std::exchange(shownEdges_, edges) == edges)
        return;
    if (edges)
        handle_->setCursor(WindowEdges::cursor(edges));
    else
        handle_->unsetCursor();
}

void WindowDrag::startMove() {
    begin({});
}

void WindowDrag::begin(Qt::Edges edges) {
    if (handle_ == nullptr)
        return;
    isWithSystem_ = edges ? handle_->startSystemResize(edges) : handle_->startSystemMove();
    if (!isWithSystem_)
        own_ = Own{edges, window_.geometry()};
}

void WindowDrag::end() {
    if (!isUnderWay())
        return;
    isWithSystem_ = false;
    own_.reset();
    Q_EMIT ended();
}
