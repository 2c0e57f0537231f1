#include "helper/TrayTypes.h"

#include <QDBusMetaType>

namespace {

template <typename... Fields>
QDBusArgument& write(QDBusArgument& to, const Fields&... fields) {
    to.beginStructure();
    (void)(to << ... << fields);
    to.endStructure();
    return to;
}

template <typename... Fields>
const QDBusArgument& read(const QDBusArgument& from, Fields&... fields) {
    from.beginStructure();
    (void)(from >> ... >> fields);
    from.endStructure();
    return from;
}

} // namespace

void registerTrayTypes() {
    qDBusRegisterMetaType<TrayImage>();
    qDBusRegisterMetaType<QList<TrayImage>>();
    qDBusRegisterMetaType<TrayToolTip>();
    qDBusRegisterMetaType<MenuItemProperties>();
    qDBusRegisterMetaType<QList<MenuItemProperties>>();
    qDBusRegisterMetaType<MenuItemKeys>();
    qDBusRegisterMetaType<QList<MenuItemKeys>>();
    qDBusRegisterMetaType<QList<QDBusVariant>>();
    qDBusRegisterMetaType<MenuLayoutItem>();
    qDBusRegisterMetaType<MenuEvent>();
    qDBusRegisterMetaType<QList<MenuEvent>>();
    qDBusRegisterMetaType<QList<int>>();
    qDBusRegisterMetaType<ObjectInterfaces>();
    qDBusRegisterMetaType<ObjectTree>();
}

QDBusArgument& operator<<(QDBusArgument& to, const TrayImage& image) {
    return write(to, image.width, image.height, image.bytes);
}

const QDBusArgument& operator>>(const QDBusArgument& from, TrayImage& image) {
    return read(from, image.width, image.height, image.bytes);
}

QDBusArgument& operator<<(QDBusArgument& to, const TrayToolTip& tip) {
    return write(to, tip.icon, tip.images, tip.title, tip.text);
}

const QDBusArgument& operator>>(const QDBusArgument& from, TrayToolTip& tip) {
    return read(from, tip.icon, tip.images, tip.title, tip.text);
}

QDBusArgument& operator<<(QDBusArgument& to, const MenuItemProperties& item) {
    return write(to, item.id, item.properties);
}

const QDBusArgument& operator>>(const QDBusArgument& from, MenuItemProperties& item) {
    return read(from, item.id, item.properties);
}

QDBusArgument& operator<<(QDBusArgument& to, const MenuItemKeys& item) {
    return write(to, item.id, item.keys);
}

const QDBusArgument& operator>>(const QDBusArgument& from, MenuItemKeys& item) {
    return read(from, item.id, item.keys);
}

QDBusArgument& operator<<(QDBusArgument& to, const MenuLayoutItem& item) {
    return write(to, item.id, item.properties, item.children);
}

const QDBusArgument& operator>>(const QDBusArgument& from, MenuLayoutItem& item) {
    return read(from, item.id, item.properties, item.children);
}

QDBusArgument& operator<<(QDBusArgument& to, const MenuEvent& event) {
    return write(to, event.id, event.name, event.data, event.time);
}

const QDBusArgument& operator>>(const QDBusArgument& from, MenuEvent& event) {
    return read(from, event.id, event.name, event.data, event.time);
}
