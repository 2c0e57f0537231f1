#include "control/ControlTypes.h"

#include <QDBusMetaType>

QDBusArgument& operator<<(QDBusArgument& argument, const RememberedProgram& program) {
    argument.beginStructure();
    argument << program.name << program.percent << program.muted;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, RememberedProgram& program) {
    argument.beginStructure();
    argument >> program.name >> program.percent >> program.muted;
    argument.endStructure();
    return argument;
}

void registerControlTypes() {
    qDBusRegisterMetaType<RememberedProgram>();
    qDBusRegisterMetaType<RememberedPrograms>();
    qDBusRegisterMetaType<BusInterfaces>();
    qDBusRegisterMetaType<BusTree>();
}
