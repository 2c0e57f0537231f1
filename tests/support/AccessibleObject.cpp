#include "support/AccessibleObject.h"

#include "support/WaitUntil.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusReply>
#include <QDBusVariant>

#include <functional>
#include <stdexcept>

namespace support {

namespace {

const QString registry = "org.a11y.atspi.Registry";
constexpr const char* accessible = "org.a11y.atspi.Accessible";
constexpr const char* valueInterface = "org.a11y.atspi.Value";
constexpr const char* actionInterface = "org.a11y.atspi.Action";

std::string accessibilityBus(const PrivateBus& session) {
    BusConnection bus(session.address());
    QString address;
    if (!waitUntil([&] {
            const QDBusReply<QString> answer = bus->call(QDBusMessage::createMethodCall(
                "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"));
            address = answer.value();
            return !address.isEmpty();
        }))
        throw std::runtime_error("the bus of assistive tools does not come up");
    return address.toStdString();
}

} // namespace

AccessibleObject::AccessibleObject(QDBusConnection bus, QString service, QString path)
    : bus_(std::move(bus)), service_(std::move(service)), path_(std::move(path)) {}

QVariantList AccessibleObject::call(const char* interface, const char* method,
                                    const QVariantList& arguments) const {
    QDBusMessage question = QDBusMessage::createMethodCall(
        service_, path_, QLatin1String(interface), QLatin1String(method));
    question.setArguments(arguments);
    // Not a blocking call: who asks this test's own window something must get an answer meanwhile.
    const QDBusPendingCall pending = bus_.asyncCall(question);
    if (!waitUntil([&] { return pending.isFinished(); }))
        return {};
    const QDBusMessage answer = pending.reply();
    return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments() : QVariantList();
}

QVariant AccessibleObject::property(const char* interface, const char* name) const {
    const QVariantList answer = call("org.freedesktop.DBus.Properties", "Get",
                                     {QLatin1String(interface), QLatin1String(name)});
    return answer.isEmpty() ? QVariant() : answer[0].value<QDBusVariant>().variant();
}

QString AccessibleObject::name() const {
    return property(accessible, "Name").toString();
}

QString AccessibleObject::description() const {
    return property(accessible, "Description").toString();
}

QString AccessibleObject::role() const {
    return call(accessible, "GetRoleName").value(0).toString();
}

QList<AccessibleObject> AccessibleObject::children() const {
    QList<AccessibleObject> children;
    const QVariantList answer = call(accessible, "GetChildren");
    if (answer.isEmpty())
        return children;
    const auto list = answer[0].value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        QString service;
        QDBusObjectPath path;
        list.beginStructure();
        list >> service >> path;
        list.endStructure();
        children.push_back({bus_, service, path.path()});
    }
    list.endArray();
    return children;
}

std::optional<AccessibleObject> AccessibleObject::find(const QString& role,
                                                       const QString& name) const {
    if (this->role() == role && this->name() == name)
        return *this;
    for (const AccessibleObject& child : children()) {
        if (const auto found = child.find(role, name))
            return found;
    }
    return std::nullopt;
}

bool AccessibleObject::hasState(unsigned state) const {
    const QVariantList answer = call(accessible, "GetState");
    if (answer.isEmpty())
        return false;
    QList<uint> words;
    answer[0].value<QDBusArgument>() >> words;
    return (words.value(state / 32) >> (state % 32) & 1U) != 0;
}

double AccessibleObject::value(const char* property) const {
    return this->property(valueInterface, property).toDouble();
}

void AccessibleObject::setValue(double value) const {
    call("org.freedesktop.DBus.Properties", "Set",
         {QLatin1String(valueInterface), "CurrentValue", QVariant::fromValue(QDBusVariant(value))});
}

QString AccessibleObject::text() const {
    constexpr int end = -1;
    return call("org.a11y.atspi.Text", "GetText", {0, end}).value(0).toString();
}

QSize AccessibleObject::size() const {
    constexpr unsigned onTheScreen = 0;
    const QVariantList answer =
        call("org.a11y.atspi.Component", "GetExtents", {QVariant(onTheScreen)});
    if (answer.isEmpty())
        return {};
    int x = 0;
    int y = 0;
    QSize size;
    const auto extents = answer[0].value<QDBusArgument>();
    extents.beginStructure();
    extents >> x >> y >> size.rwidth() >> size.rheight();
    extents.endStructure();
    return size;
}

QStringList AccessibleObject::actions() const {
    QStringList names;
    const int count = property(actionInterface, "NActions").toInt();
    for (int index = 0; index < count; ++index)
        names += call(actionInterface, "GetName", {index}).value(0).toString();
    return names;
}

void AccessibleObject::act(const QString& action) const {
    call(actionInterface, "DoAction", {static_cast<int>(actions().indexOf(action))});
}

AssistiveTool::AssistiveTool(const PrivateBus& session)
    : launcher_({"/usr/libexec/at-spi-bus-launcher", "--launch-immediately"})
    , bus_(accessibilityBus(session)) {}

AccessibleObject AssistiveTool::desktop() const {
    return {*bus_, registry, "/org/a11y/atspi/accessible/root"};
}

std::optional<AccessibleObject> AssistiveTool::window(const QString& title) const {
    for (const AccessibleObject& program : desktop().children()) {
        for (const AccessibleObject& window : program.children()) {
            const QString role = window.role();
            if ((role == "window" || role == "frame") && window.name() == title)
                return window;
        }
    }
    return std::nullopt;
}

QString AssistiveTool::outline() const {
    const std::function<QString(const AccessibleObject&, int)> of = [&](const auto& object,
                                                                        int depth) {
        QString text =
            QString(2 * depth, QLatin1Char(' ')) + object.role() + " \"" + object.name() + "\"\n";
        for (const AccessibleObject& child : object.children())
            text += of(child, depth + 1);
        return text;
    };
    return of(desktop(), 0);
}

void AssistiveTool::listen(const QString& event) const {
    QDBusMessage call = QDBusMessage::createMethodCall(registry, "/org/a11y/atspi/registry",
                                                       registry, "RegisterEvent");
    call << event;
    bus_->call(call);
}

} // namespace support
