#include "framework/application/ApplicationClasses.h"

#include "framework/application/QNGUIApplication.h"

#include <QByteArray>
#include <QHash>

#include <utility>

namespace {

using Table = QHash<QByteArray, ApplicationClasses::Factory>;

Table& table() {
    static Table classes{{QByteArrayLiteral("QNGUIApplication"),
                          [] { return std::make_unique<QNGUIApplication>(); }}};
    return classes;
}

} // namespace

void ApplicationClasses::add(const QByteArray& name, const Factory& factory) {
    table().insert(name, factory);
}

void ApplicationClasses::remove(const QByteArray& name) {
    table().remove(name);
}

ApplicationClasses::Factory ApplicationClasses::find(const QByteArray& name) {
    return table().value(name);
}
