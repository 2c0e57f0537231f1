#include "settings/PreferencesMessage.h"

#include <QDBusMetaType>
#include <QList>

QDBusArgument& operator<<(QDBusArgument& argument, const NamedSetting& setting) {
    argument.beginStructure();
    argument << setting.name << setting.percent << setting.muted;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, NamedSetting& setting) {
    argument.beginStructure();
    argument >> setting.name >> setting.percent >> setting.muted;
    argument.endStructure();
    return argument;
}

void registerNamedSettings() {
    qDBusRegisterMetaType<NamedSetting>();
    qDBusRegisterMetaType<QList<NamedSetting>>();
}
