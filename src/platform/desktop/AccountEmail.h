#pragma once

#include <QDBusConnection>
#include <QString>

namespace platform {

/// The e-mail address that the desktop's account service has of this user, which it tells without
/// asking them. Empty if it has none, or if it does not run. Waits for a reply for at most a second
/// each of two times. Any thread.
QString accountEmail(const QDBusConnection& bus);

} // namespace platform
