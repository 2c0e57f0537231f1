#include "remote/ControlService.h"

#include "model/AppVolumeController.h"
#include "model/MVCommAppValue.h"
#include "model/MVIgnoredApps.h"
#include "remote/InterfaceXml.h"
#include "remote/ProgramInterface.h"
#include "remote/ProgramPath.h"
#include "settings/PreferenceKeys.h"

#include <QDBusError>

#include <algorithm>
#include <utility>

namespace {

constexpr const char* managerInterface = "org.freedesktop.DBus.ObjectManager";

constexpr const char* propertiesXml = R"(<interface name="org.freedesktop.DBus.Properties">
  <method name="Get"><arg type="s" name="interface_name" direction="in"/>
    <arg type="s" name="property_name" direction="in"/>
    <arg type="v" name="value" direction="out"/></method>
  <method name="GetAll"><arg type="s" name="interface_name" direction="in"/>
    <arg type="a{sv}" name="properties" direction="out"/></method>
  <method name="Set"><arg type="s" name="interface_name" direction="in"/>
    <arg type="s" name="property_name" direction="in"/>
    <arg type="v" name="value" direction="in"/></method>
  <signal name="PropertiesChanged"><arg type="s" name="interface_name"/>
    <arg type="a{sv}" name="changed_properties"/>
    <arg type="as" name="invalidated_properties"/></signal>
</interface>
)";

constexpr const char* managerXml = R"(<interface name="org.freedesktop.DBus.ObjectManager">
  <method name="GetManagedObjects">
    <arg type="a{oa{sa{sv}}}" name="objects" direction="out"/></method>
  <signal name="InterfacesAdded"><arg type="o" name="object"/>
    <arg type="a{sa{sv}}" name="interfaces"/></signal>
  <signal name="InterfacesRemoved"><arg type="o" name="object"/>
    <arg type="as" name="interfaces"/></signal>
</interface>
)";

} // namespace

ControlService::ControlService(Dependencies dependencies)
    : dependencies_(std::move(dependencies))
    , ignoredObserver_(MVIgnoredApps::didChangeNotification,
                       [this](const QVariant&) { publishing_.start(); })
    , defaultVolumeObservation_(dependencies_.defaults.observe(PreferenceKeys::newAppVolume,
                                                               [this] { publishing_.start(); })) {
    registerControlTypes();
    publishing_.setSingleShot(true);
    publishing_.setInterval(0);
    QObject::connect(&publishing_, &QTimer::timeout, &publishing_, [this] { publish(); });
    dependencies_.controller.setObserver([this] {
        if (!publishing_.isActive())
            publishing_.start();
    });
    publish();
}

ControlService::~ControlService() {
    dependencies_.controller.setObserver(nullptr);
}

QString ControlService::introspect(const QString& path) const {
    if (path == ProgramPath::root)
        return QLatin1String(propertiesXml) + QLatin1String(managerXml) +
               QLatin1String(InterfaceXml::mixer) + QStringLiteral("<node name=\"programs\"/>\n");
    if (path == ProgramPath::programs) {
        QString children;
        for (const MVCommAppValue* const app : dependencies_.controller.apps())
            children += QStringLiteral("<node name=\"%1\"/>\n")
                            .arg(ProgramPath::lastPart(app->processName()));
        return children.isEmpty() ? QStringLiteral("\n") : children;
    }
    return appAt(path) != nullptr
               ? QLatin1String(propertiesXml) + QLatin1String(InterfaceXml::program)
               : QString();
}

QDBusMessage ControlService::answer(const QDBusMessage& call) {
    dependencies_.controller.catchUp();
    const bool isTray = dependencies_.isTray && dependencies_.isTray(call.service());
    const ChangeSource source(isTray ? ChangeSource::Kind::tray : ChangeSource::Kind::bus);
    const QDBusMessage answer =
        call.path() == ProgramPath::root ? answerRoot(call) : answerProgram(call);
    if (publishing_.isActive())
        publish();
    return answer;
}

QDBusMessage ControlService::answerRoot(const QDBusMessage& call) {
    if (call.interface() == QLatin1String(managerInterface) &&
        call.member() == QLatin1String("GetManagedObjects"))
        return call.createReply(QVariant::fromValue(programs()));
    return MixerInterface(dependencies_.controller, dependencies_.ignoredApps,
                          dependencies_.commands)
        .answer(call);
}

QDBusMessage ControlService::answerProgram(const QDBusMessage& call) {
    MVCommAppValue* const app = appAt(call.path());
    if (app == nullptr)
        return call.createErrorReply(QDBusError::UnknownObject,
                                     QStringLiteral("There is no such program"));
    return ProgramInterface(dependencies_.controller, dependencies_.ignoredApps, *app).answer(call);
}

MVCommAppValue* ControlService::appAt(const QString& path) const {
    const auto& apps = dependencies_.controller.apps();
    const auto found = std::ranges::find(
        apps, path, [](const MVCommAppValue* app) { return ProgramPath::of(app->processName()); });
    return found != apps.end() ? *found : nullptr;
}

BusTree ControlService::programs() const {
    BusTree tree;
    for (MVCommAppValue* const app : dependencies_.controller.apps()) {
        const ProgramInterface program(dependencies_.controller, dependencies_.ignoredApps, *app);
        tree.insert(QDBusObjectPath(ProgramPath::of(app->processName())),
                    {{program.name(), program.properties()}});
    }
    return tree;
}

QVariantMap ControlService::mixer() const {
    return MixerInterface(dependencies_.controller, dependencies_.ignoredApps,
                          dependencies_.commands)
        .properties();
}

void ControlService::publish() {
    publishing_.stop();
    signals_.publish(programs(), mixer());
}
