#include "platform/window/WindowFront.h"

#include <QString>
#include <QWidget>

namespace platform {

void bringToFront(QWidget& window) {
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized); // maximised it stays
    window.show();
    window.raise();
    window.activateWindow();
}

/// Qt takes it from there.
void useActivationToken(const QString& token) {
    if (!token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
}

} // namespace platform
