#pragma once

#include "settings/PreferencesMessage.h"

#include <QDBusObjectPath>
#include <QList>
#include <QMap>
#include <QString>
#include <QVariantMap>

// D-Bus types that Qt does not provide.

using BusInterfaces = QMap<QString, QVariantMap>;     // a{sa{sv}}
using BusTree = QMap<QDBusObjectPath, BusInterfaces>; // a{oa{sa{sv}}}

/// Call this before sending one of them.
void registerControlTypes();
