#pragma once

#include "settings/PreferencesMessage.h"

#include <QDBusObjectPath>
#include <QList>
#include <QMap>
#include <QString>
#include <QVariantMap>

// What goes over the bus and is no type of the toolkit's own.

using BusInterfaces = QMap<QString, QVariantMap>;     // a{sa{sv}}
using BusTree = QMap<QDBusObjectPath, BusInterfaces>; // a{oa{sa{sv}}}

/// To be called before one of them is sent.
void registerControlTypes();
