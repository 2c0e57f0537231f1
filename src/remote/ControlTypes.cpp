#include "remote/ControlTypes.h"

#include <QDBusMetaType>

void registerControlTypes() {
    platform::registerNamedSettings();
    qDBusRegisterMetaType<BusInterfaces>();
    qDBusRegisterMetaType<BusTree>();
}
