#include "platform/desktop/AccountEmail.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>

#include <unistd.h>

namespace platform {

namespace {

QDBusMessage ask(const QDBusConnection& bus, const QString& path, const QString& interface,
                 const QString& method, const QVariantList& arguments) {
    constexpr int patienceInMilliseconds = 1000;
    auto question = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.Accounts"), path,
                                                   interface, method);
    question.setArguments(arguments);
    question.setAutoStartService(false);
    return bus.call(question, QDBus::Block, patienceInMilliseconds);
}

} // namespace

QString accountEmail(const QDBusConnection& bus) {
    const QDBusReply<QDBusObjectPath> user =
        ask(bus, QStringLiteral("/org/freedesktop/Accounts"),
            QStringLiteral("org.freedesktop.Accounts"), QStringLiteral("FindUserById"),
            {static_cast<qlonglong>(::getuid())});
    if (!user.isValid())
        return {};
    const QDBusReply<QDBusVariant> email =
        ask(bus, user.value().path(), QStringLiteral("org.freedesktop.DBus.Properties"),
            QStringLiteral("Get"),
            {QStringLiteral("org.freedesktop.Accounts.User"), QStringLiteral("Email")});
    return email.isValid() ? email.value().variant().toString().trimmed() : QString();
}

} // namespace platform
