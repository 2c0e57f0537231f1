#include "platform/window/WindowPositioning.h"

#include <QGuiApplication>

namespace platform {

bool canPositionWindows() {
    return !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

} // namespace platform
