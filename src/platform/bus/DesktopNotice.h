#pragma once

#include <QDBusConnection>
#include <QString>

namespace platform {

/// Shows a notice of the desktop (org.freedesktop.Notifications), for programs without windows.
/// Both texts are for the user. Does not wait; without such a service nothing is shown. Main thread
/// only.
void postDesktopNotice(const QDBusConnection& bus, const QString& title, const QString& text);

} // namespace platform
