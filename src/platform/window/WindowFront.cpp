#include "platform/window/WindowFront.h"

#include <QWidget>

namespace platform {

void bringToFront(QWidget& window) {
    if (window.isMinimized())
        window.showNormal();
    else
        window.show();
    window.raise();
    window.activateWindow();
}

} // namespace platform
