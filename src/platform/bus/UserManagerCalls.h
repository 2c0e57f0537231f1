#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QVariantList>

#include <functional>

namespace platform {

/// Calls of this user's systemd manager, for the classes here that use it. It is never started for
/// them. Main thread only.
namespace UserManagerCalls {

QDBusMessage call(const QString& path, const QString& interface, const QString& method,
                  const QVariantList& arguments);

/// Of the manager itself.
QDBusMessage managerCall(const QString& method, const QVariantList& arguments);

/// Passes the reply or error to `answer`, from the event loop and after 3 s at most: a manager that
/// hangs counts as none, and so does a bus that is not connected. Not after `owner` is destroyed.
void send(QDBusConnection& bus, const QDBusMessage& message, QObject& owner,
          std::function<void(const QDBusMessage&)> answer);

} // namespace UserManagerCalls

} // namespace platform
