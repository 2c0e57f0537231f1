#include "platform/bus/ProgramLauncher.h"

#include "platform/bus/UserManagerCalls.h"
#include "platform/processes/DetachedProgram.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QFileInfo>
#include <QRandomGenerator>

#include <utility>

namespace platform {

namespace {

/// (sv)
struct UnitProperty {
    QString name;
    QDBusVariant value;
};

/// (sasb)
struct UnitCommand {
    QString program;
    QStringList words; // the first is the program again
    bool mayFail = false;
};

/// (sa(sv))
struct AuxiliaryUnit {
    QString name;
    QList<UnitProperty> properties;
};

QDBusArgument& operator<<(QDBusArgument& to, const UnitProperty& property) {
    to.beginStructure();
    to << property.name << property.value;
    to.endStructure();
    return to;
}

const QDBusArgument& operator>>(const QDBusArgument& from, UnitProperty& property) {
    from.beginStructure();
    from >> property.name >> property.value;
    from.endStructure();
    return from;
}

QDBusArgument& operator<<(QDBusArgument& to, const UnitCommand& command) {
    to.beginStructure();
    to << command.program << command.words << command.mayFail;
    to.endStructure();
    return to;
}

const QDBusArgument& operator>>(const QDBusArgument& from, UnitCommand& command) {
    from.beginStructure();
    from >> command.program >> command.words >> command.mayFail;
    from.endStructure();
    return from;
}

QDBusArgument& operator<<(QDBusArgument& to, const AuxiliaryUnit& unit) {
    to.beginStructure();
    to << unit.name << unit.properties;
    to.endStructure();
    return to;
}

const QDBusArgument& operator>>(const QDBusArgument& from, AuxiliaryUnit& unit) {
    from.beginStructure();
    from >> unit.name >> unit.properties;
    from.endStructure();
    return from;
}

void registerTypes() {
    qDBusRegisterMetaType<UnitProperty>();
    qDBusRegisterMetaType<QList<UnitProperty>>();
    qDBusRegisterMetaType<UnitCommand>();
    qDBusRegisterMetaType<QList<UnitCommand>>();
    qDBusRegisterMetaType<AuxiliaryUnit>();
    qDBusRegisterMetaType<QList<AuxiliaryUnit>>();
}

/// The manager may have been started for another session, or without these.
QStringList sessionVariables() {
    QStringList variables;
    for (const char* const name :
         {"DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY", "XDG_CURRENT_DESKTOP", "XDG_SESSION_TYPE",
          "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_DATA_HOME",
          "XDG_STATE_HOME", "XDG_CACHE_HOME", "TONVALE_LOCAL_LIBRARY", "TONVALE_SOCKET_DIR"}) {
        if (qEnvironmentVariableIsSet(name))
            variables += QLatin1String(name) + QLatin1Char('=') + qEnvironmentVariable(name);
    }
    return variables;
}

/// No two are called the same: a unit whose processes have ended may still be there for a moment.
QString unitName(const QString& name) {
    constexpr int hexadecimal = 16;
    return QStringLiteral("app-%1@%2.service")
        .arg(QString(name).replace(QLatin1Char('-'), QLatin1String("\\x2d")),
             QString::number(QRandomGenerator::global()->generate64(), hexadecimal));
}

UnitProperty property(const char* name, const QVariant& value) {
    return {QString::fromLatin1(name), QDBusVariant(value)};
}

QDBusMessage startOf(const ProgramLauncher::Program& program) {
    const QList<UnitCommand> commands{{program.program, {program.program}}};
    const QList<UnitProperty> properties{
        property("Description", QFileInfo(program.program).fileName()),
        property("Type", QStringLiteral("exec")),
        property("Slice", QStringLiteral("app.slice")),
        property("CollectMode", QStringLiteral("inactive-or-failed")),
        property("Environment", sessionVariables() + program.variables),
        property("ExecStart", QVariant::fromValue(commands))};
    return UserManagerCalls::managerCall(QStringLiteral("StartTransientUnit"),
                                         {unitName(program.name), QStringLiteral("fail"),
                                          QVariant::fromValue(properties),
                                          QVariant::fromValue(QList<AuxiliaryUnit>())});
}

} // namespace

void ProgramLauncher::launch(const Program& program, Answer answer) {
    registerTypes();
    const QFileInfo file(program.program);
    if (!file.isFile() || !file.isExecutable()) {
        answer(startDetached(program.program, {})); // which knows the reason
        return;
    }
    UserManagerCalls::send(bus_, startOf(program), *calls_,
                           [program, answer = std::move(answer)](const QDBusMessage& reply) {
                               if (reply.type() == QDBusMessage::ReplyMessage)
                                   answer({});
                               else
                                   answer(startDetachedWith(program.program, program.variables));
                           });
}

} // namespace platform
