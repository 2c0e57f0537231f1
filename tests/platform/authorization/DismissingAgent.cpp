#include "platform/processes/ProcessInfo.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVirtualObject>
#include <QVariantMap>

#include <cstdio>
#include <cstdlib>

namespace {

/// Polkit's (sa{sv}): whom it may ask for.
struct Subject {
    QString kind;
    QVariantMap details;
};

QDBusArgument& operator<<(QDBusArgument& argument, const Subject& subject) {
    argument.beginStructure();
    argument << subject.kind << subject.details;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, Subject& subject) {
    argument.beginStructure();
    argument >> subject.kind >> subject.details;
    argument.endStructure();
    return argument;
}

/// The user closes every dialogue.
class Dialogue final : public QDBusVirtualObject {
  public:
    QString introspect(const QString& /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        return bus.send(message.createErrorReply(
            QStringLiteral("org.freedesktop.PolicyKit1.Error.Cancelled"), QStringLiteral("no")));
    }
};

} // namespace

Q_DECLARE_METATYPE(Subject)

// dismissing_agent PROCESS: is asked instead of that process's user. Prints "ready" when it can be.
int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (argc != 2)
        return 2;
    const auto process = static_cast<pid_t>(std::atoi(argv[1]));
    qDBusRegisterMetaType<Subject>();
    Dialogue dialogue;
    auto bus = QDBusConnection::systemBus();
    bus.registerVirtualObject(QStringLiteral("/agent"), &dialogue);
    const Subject subject{
        QStringLiteral("unix-process"),
        {{QStringLiteral("pid"), static_cast<quint32>(process)},
         {QStringLiteral("start-time"),
          QVariant::fromValue<qulonglong>(platform::processStartTime(process).value_or(0))}}};
    QDBusMessage call =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.PolicyKit1"),
                                       QStringLiteral("/org/freedesktop/PolicyKit1/Authority"),
                                       QStringLiteral("org.freedesktop.PolicyKit1.Authority"),
                                       QStringLiteral("RegisterAuthenticationAgent"));
    call.setArguments(
        {QVariant::fromValue(subject), QStringLiteral("C"), QStringLiteral("/agent")});
    const QDBusMessage answer = bus.call(call);
    if (answer.type() == QDBusMessage::ErrorMessage) {
        std::fprintf(stderr, "%s\n", qPrintable(answer.errorMessage()));
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
