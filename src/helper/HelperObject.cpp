#include "helper/HelperObject.h"

#include <QDBusError>
#include <QDBusVariant>
#include <QVariantMap>

#include <utility>

namespace {

const QString path = QStringLiteral("/com/quarnel/TonvaleHelper");
const QString ownInterface = QStringLiteral("com.quarnel.TonvaleHelper");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString shown = QStringLiteral("Shown");

constexpr const char* xml = R"(<interface name="org.freedesktop.DBus.Properties">
  <method name="Get"><arg type="s" name="interface_name" direction="in"/>
    <arg type="s" name="property_name" direction="in"/>
    <arg type="v" name="value" direction="out"/></method>
  <method name="GetAll"><arg type="s" name="interface_name" direction="in"/>
    <arg type="a{sv}" name="properties" direction="out"/></method>
  <signal name="PropertiesChanged"><arg type="s" name="interface_name"/>
    <arg type="a{sv}" name="changed_properties"/>
    <arg type="as" name="invalidated_properties"/></signal>
</interface>
<interface name="com.quarnel.TonvaleHelper">
  <property name="Shown" type="b" access="read"/>
</interface>
)";

} // namespace

void HelperObject::setShown(bool isShown) {
    if (std::exchange(isShown_, isShown) == isShown)
        return;
    auto signal =
        QDBusMessage::createSignal(path, propertiesInterface, QStringLiteral("PropertiesChanged"));
    signal.setArguments({ownInterface, QVariantMap{{shown, isShown}}, QStringList()});
    bus_.send(signal);
}

QString HelperObject::introspect(const QString& of) const {
    return of == path ? QLatin1String(xml) : QString();
}

QDBusMessage HelperObject::answer(const QDBusMessage& call) {
    if (call.path() != path)
        return call.createErrorReply(QDBusError::UnknownObject,
                                     QStringLiteral("There is no such object"));
    const bool isOwn = call.interface() == propertiesInterface && !call.arguments().isEmpty() &&
                       call.arguments()[0].toString() == ownInterface;
    if (isOwn && call.member() == QLatin1String("GetAll"))
        return call.createReply(QVariantMap{{shown, isShown_}});
    if (isOwn && call.member() == QLatin1String("Get"))
        return answerGet(call);
    return call.createErrorReply(QDBusError::UnknownMethod,
                                 QStringLiteral("There is no such method"));
}

QDBusMessage HelperObject::answerGet(const QDBusMessage& call) const {
    if (call.arguments().value(1).toString() == shown)
        return call.createReply(QVariant::fromValue(QDBusVariant(isShown_)));
    return call.createErrorReply(QDBusError::UnknownProperty,
                                 QStringLiteral("There is no such property"));
}
