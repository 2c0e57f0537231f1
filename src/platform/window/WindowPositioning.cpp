#include "platform/window/WindowPositioning.h"

#include <QGuiApplication>
#include <QScreen>
#include <QStyle>
#include <QWidget>

namespace platform {

bool canPositionWindows() {
    return !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

void moveToCenter(QWidget& window, const QScreen& screen) {
    if (canPositionWindows())
        window.move(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, window.size(),
                                        screen.availableGeometry())
                        .topLeft());
}

} // namespace platform
