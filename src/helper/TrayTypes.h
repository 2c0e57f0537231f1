#pragma once

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QList>
#include <QMap>
#include <QString>
#include <QVariantMap>

// What travels between a tray icon, its hosts and the application, and has no type in Qt.

/// (iiay): an image. None is ever sent, since icons go by their names.
struct TrayImage {
    int width = 0;
    int height = 0;
    QByteArray bytes;
};

/// (sa(iiay)ss)
struct TrayToolTip {
    QString icon;
    QList<TrayImage> images;
    QString title;
    QString text;
};

/// (ia{sv})
struct MenuItemProperties {
    int id = 0;
    QVariantMap properties;
};

/// (ias)
struct MenuItemKeys {
    int id = 0;
    QStringList keys;
};

/// (ia{sv}av)
struct MenuLayoutItem {
    int id = 0;
    QVariantMap properties;
    QList<QDBusVariant> children; // each a MenuLayoutItem
};

/// (isvu)
struct MenuEvent {
    int id = 0;
    QString name;
    QDBusVariant data;
    uint time = 0;
};

using ObjectInterfaces = QMap<QString, QVariantMap>;        // a{sa{sv}}
using ObjectTree = QMap<QDBusObjectPath, ObjectInterfaces>; // a{oa{sa{sv}}}

Q_DECLARE_METATYPE(TrayImage)
Q_DECLARE_METATYPE(TrayToolTip)
Q_DECLARE_METATYPE(MenuItemProperties)
Q_DECLARE_METATYPE(MenuItemKeys)
Q_DECLARE_METATYPE(MenuLayoutItem)
Q_DECLARE_METATYPE(MenuEvent)

/// Call this before one of them is sent or received.
void registerTrayTypes();

QDBusArgument& operator<<(QDBusArgument& to, const TrayImage& image);
const QDBusArgument& operator>>(const QDBusArgument& from, TrayImage& image);
QDBusArgument& operator<<(QDBusArgument& to, const TrayToolTip& tip);
const QDBusArgument& operator>>(const QDBusArgument& from, TrayToolTip& tip);
QDBusArgument& operator<<(QDBusArgument& to, const MenuItemProperties& item);
const QDBusArgument& operator>>(const QDBusArgument& from, MenuItemProperties& item);
QDBusArgument& operator<<(QDBusArgument& to, const MenuItemKeys& item);
const QDBusArgument& operator>>(const QDBusArgument& from, MenuItemKeys& item);
QDBusArgument& operator<<(QDBusArgument& to, const MenuLayoutItem& item);
const QDBusArgument& operator>>(const QDBusArgument& from, MenuLayoutItem& item);
QDBusArgument& operator<<(QDBusArgument& to, const MenuEvent& event);
const QDBusArgument& operator>>(const QDBusArgument& from, MenuEvent& event);
