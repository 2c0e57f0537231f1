#include "remote/ControlTypes.h"

#include <QDBusMetaType>

void registerControlTypes() {
    registerNamedSettings();
    qDBusRegisterMetaType<BusInterfaces>();
    qDBusRegisterMetaType<BusTree>();
}
