#include "look/window/QNAboutController.h"

#include "look/window/QNAboutBox.h"
#include "platform/window/WindowFront.h"
#include "platform/window/WindowPositioning.h"

#include <QScreen>
#include <QStyle>

QNAboutController::QNAboutController(QWidget& window) : window_(window) {}

void QNAboutController::showWindow() {
    if (box_ == nullptr)
        box_ = new QNAboutBox(&window_, shows64BitMark_);
    if (!box_->isVisible() && platform::canPositionWindows())
        box_->move(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, box_->size(),
                                       window_.screen()->availableGeometry())
                       .topLeft());
    platform::bringToFront(*box_);
}
