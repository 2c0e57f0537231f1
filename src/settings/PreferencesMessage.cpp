#include "settings/PreferencesMessage.h"

#include <QDBusMetaType>
#include <QList>

QDBusArgument& operator<<(QDBusArgument& argument, const NamedSetting& named) {
    argument.beginStructure();
    argument << named.name << named.setting.percent << named.setting.muted;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, NamedSetting& named) {
    argument.beginStructure();
    argument >> named.name >> named.setting.percent >> named.setting.muted;
    argument.endStructure();
    return argument;
}

void registerNamedSettings() {
    qDBusRegisterMetaType<NamedSetting>();
    qDBusRegisterMetaType<QList<NamedSetting>>();
}
