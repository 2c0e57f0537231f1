#pragma once

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QList>
#include <QMap>
#include <QMetaType>
#include <QString>
#include <QVariantMap>

// What goes over the bus and is no type of the toolkit's own.

struct RememberedProgram {
    QString name;
    int percent = 0;
    bool muted = false;
};
using RememberedPrograms = QList<RememberedProgram>;  // a(sib)
using BusInterfaces = QMap<QString, QVariantMap>;     // a{sa{sv}}
using BusTree = QMap<QDBusObjectPath, BusInterfaces>; // a{oa{sa{sv}}}

QDBusArgument& operator<<(QDBusArgument& argument, const RememberedProgram& program);
const QDBusArgument& operator>>(const QDBusArgument& argument, RememberedProgram& program);

/// To be called before one of them is sent.
void registerControlTypes();

Q_DECLARE_METATYPE(RememberedProgram)
