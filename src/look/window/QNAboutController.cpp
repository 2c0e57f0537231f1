#include "look/window/QNAboutController.h"

#include "look/window/QNAboutBox.h"
#include "platform/window/WindowFront.h"
#include "platform/window/WindowPositioning.h"

#include <QWidget>

QNAboutController::QNAboutController(QWidget& window) : window_(window) {}

void QNAboutController::showWindow() {
    if (box_ == nullptr)
        box_ = new QNAboutBox(&window_, shows64BitMark_);
    if (!box_->isVisible())
        platform::moveToCenter(*box_, *window_.screen());
    platform::bringToFront(*box_);
}
