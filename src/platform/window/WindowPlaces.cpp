#include "platform/window/WindowPlaces.h"

#include <QGuiApplication>

namespace platform {

bool windowsHavePlaces() {
    return !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

} // namespace platform
