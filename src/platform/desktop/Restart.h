#pragma once

#include <QDBusConnection>
#include <QString>

#include <functional>

namespace platform {

/// Asks for a restart of the computer, without waiting for an answer: the desktop's session manager
/// if one is on the session bus, since it lets programs save, else logind, which may ask the user
/// for a password.
///
/// 0 if the request has been sent, else an errno. A refusal that comes later calls `refused`, which
/// may be null, from the event loop, with the reason as the system words it. A session manager that
/// turns out not to know the request hands it on to logind. Main thread only.
[[nodiscard]] int requestRestart(const QDBusConnection& session, const QDBusConnection& system,
                                 const std::function<void(const QString& reason)>& refused);

} // namespace platform
