#include "remote/ControlSignals.h"

#include "platform/bus/SessionBus.h"
#include "remote/MixerInterface.h"
#include "remote/ProgramInterface.h"
#include "remote/ProgramPath.h"

#include <QDBusConnection>
#include <QDBusMessage>

namespace {

void send(const QString& path, const char* interface, const char* member,
          const QVariantList& arguments) {
    auto signal = QDBusMessage::createSignal(path, QLatin1String(interface), QLatin1String(member));
    signal.setArguments(arguments);
    platform::sessionBus().send(signal);
}

void sendManaged(const char* member, const QDBusObjectPath& path, const QVariant& interfaces) {
    send(ProgramPath::root, "org.freedesktop.DBus.ObjectManager", member,
         {QVariant::fromValue(path), interfaces});
}

void sendChanges(const QString& path, const QString& interface, const QVariantMap& before,
                 const QVariantMap& now) {
    QVariantMap changed;
    for (auto property = now.begin(); property != now.end(); ++property) {
        if (ProgramInterface::isSignalled(property.key()) &&
            before.value(property.key()) != *property)
            changed.insert(property.key(), *property);
    }
    if (!changed.isEmpty())
        send(path, "org.freedesktop.DBus.Properties", "PropertiesChanged",
             {interface, changed, QStringList()});
}

} // namespace

void ControlSignals::publish(const BusTree& programs, const QVariantMap& mixer) {
    tellGone(programs);
    for (auto program = programs.begin(); program != programs.end(); ++program)
        tellProgram(program.key(), *program);
    if (!mixer_.isEmpty())
        sendChanges(ProgramPath::root, MixerInterface::interfaceName(), mixer_, mixer);
    programs_ = programs;
    mixer_ = mixer;
}

void ControlSignals::tellGone(const BusTree& programs) const {
    for (auto program = programs_.begin(); program != programs_.end(); ++program) {
        if (!programs.contains(program.key()))
            sendManaged("InterfacesRemoved", program.key(), QStringList(program->keys()));
    }
}

void ControlSignals::tellProgram(const QDBusObjectPath& path,
                                 const BusInterfaces& interfaces) const {
    const auto before = programs_.constFind(path);
    if (before == programs_.constEnd()) {
        sendManaged("InterfacesAdded", path, QVariant::fromValue(interfaces));
        return;
    }
    for (auto interface = interfaces.begin(); interface != interfaces.end(); ++interface)
        sendChanges(path.path(), interface.key(), before->value(interface.key()), *interface);
}
