#include "remote/MixerInterface.h"

#include "comm/MVCommConnectedProcess.h"
#include "model/AppVolumeController.h"
#include "model/MVCommAppValue.h"
#include "model/MVIgnoredApp.h"
#include "model/MVIgnoredApps.h"
#include "remote/ControlLog.h"
#include "remote/ControlTypes.h"

#include <QDBusError>

#include <algorithm>

namespace {

const QString ignoredProperty = QStringLiteral("Ignored");
const QString noLongerIgnored = QStringLiteral("NoLongerIgnored");
const QString defaultVolume = QStringLiteral("DefaultVolume");
constexpr int noDefault = -1;

BusError noSuchProgram() {
    return {QStringLiteral("com.quarnel.Tonvale.Error.NoSuchProgram"),
            QStringLiteral("There is no program of that name")};
}

BusError nothingRemembered() {
    return {QStringLiteral("com.quarnel.Tonvale.Error.NothingRemembered"),
            QStringLiteral("The program has no saved settings")};
}

BusError notInRange() {
    return BusError::invalid(QStringLiteral("A volume is 0 to 100 percent"));
}

/// The ignore lists contain process names; users know displayed names.
QString displayed(const QString& processName) {
    return MVCommAppValue::displayNameForProcessName(processName);
}

bool isSameName(const QString& one, const QString& other) {
    return QString::compare(one, other, Qt::CaseInsensitive) == 0;
}

QString processNameOf(const QString& displayName) {
    const QString sounds = kMVCommAudioDaemonName;
    return isSameName(displayName, displayed(sounds)) ? sounds : displayName;
}

/// Null for a program that does not run.
const MVCommAppValue* runningProgram(const AppVolumeController& controller,
                                     const QString& displayName) {
    const auto& running = controller.apps();
    const auto app = std::ranges::find(running, displayName, &MVCommAppValue::displayName);
    return app != running.end() ? *app : nullptr;
}

} // namespace

MixerInterface::MixerInterface(AppVolumeController& controller, MVIgnoredApps& ignored,
                               const ApplicationCommands& commands)
    : BusInterface(interfaceName())
    , controller_(controller)
    , ignored_(ignored)
    , commands_(commands) {}

QVariantMap MixerInterface::properties() const {
    return {{ignoredProperty, ignoredNames()},
            {noLongerIgnored, builtInNames(false)},
            {defaultVolume, controller_.rememberedApps().defaultVolume().value_or(noDefault)}};
}

std::optional<BusError> MixerInterface::set(const QString& property, const QVariant& value) {
    if (property != defaultVolume)
        return BusError{QDBusError::errorString(QDBusError::PropertyReadOnly),
                        QStringLiteral("The property is read-only")};
    const int percent = value.toInt();
    if (percent != noDefault && !ProgramSetting::isInRange(percent))
        return notInRange();
    controller_.rememberedApps().setDefaultVolume(percent == noDefault ? std::nullopt
                                                                       : std::optional(percent));
    return std::nullopt;
}

std::optional<QString> MixerInterface::signature(const QString& method) const {
    if (method == QLatin1String("ShowWindow") || method == QLatin1String("Quit") ||
        method == QLatin1String("GetRemembered"))
        return QString();
    if (method == QLatin1String("SetRemembered"))
        return QStringLiteral("sib");
    if (method == QLatin1String("ToggleWindow") || method == QLatin1String("Forget") ||
        method == QLatin1String("Ignore") || method == QLatin1String("Unignore"))
        return QStringLiteral("s");
    return std::nullopt;
}

BusInterface::Outcome MixerInterface::call(const QString& method, const QVariantList& arguments) {
    if (method == QLatin1String("GetRemembered"))
        return {{remembered()}};
    if (commands(method, arguments))
        return {};
    const QString name = arguments[0].toString();
    if (method == QLatin1String("SetRemembered"))
        return {{}, setRemembered(name, {arguments[1].toInt(), arguments[2].toBool()})};
    if (method == QLatin1String("Forget"))
        return {{}, forget(name)};
    return {{}, method == QLatin1String("Ignore") ? ignore(name) : unignore(name)};
}

/// Whether the method is one of the application's commands, which has been given then.
bool MixerInterface::commands(const QString& method, const QVariantList& arguments) {
    if (method == QLatin1String("ShowWindow"))
        commands_.showWindow();
    else if (method == QLatin1String("ToggleWindow"))
        commands_.toggleWindow(arguments[0].toString());
    else if (method == QLatin1String("Quit"))
        commands_.quit();
    else
        return false;
    return true;
}

QStringList MixerInterface::ignoredNames() const {
    QStringList names;
    for (const QString& name : ignored_.custom())
        names.append(displayed(name));
    return names + builtInNames(true);
}

QStringList MixerInterface::builtInNames(bool enabled) const {
    QStringList names;
    for (const auto& entry : ignored_.builtIn()) {
        if (entry->enabled() == enabled)
            names.append(displayed(entry->name()));
    }
    return names;
}

QVariant MixerInterface::remembered() const {
    return QVariant::fromValue(controller_.rememberedApps().all());
}

std::optional<BusError> MixerInterface::setRemembered(const QString& name,
                                                      const ProgramSetting& setting) {
    if (name.isEmpty())
        return noSuchProgram();
    if (!ProgramSetting::isInRange(setting.percent))
        return notInRange();
    RememberedApps& programs = controller_.rememberedApps();
    const ProgramSetting before = programs.of(name);
    // which is possible in memory
    const bool isUnmuting = setting.percent == before.percent && !setting.muted;
    if (const MVCommAppValue* const app = runningProgram(controller_, name); app && !isUnmuting) {
        if (const QString reason = controller_.reasonNotControllable(*app); !reason.isEmpty())
            return BusError::notControllable(reason);
    }
    programs.set(name, setting);
    if (before.percent != setting.percent)
        ControlLog::volume(name, setting.percent);
    if (before.muted != setting.muted)
        ControlLog::muted(name, setting.muted);
    return std::nullopt;
}

std::optional<BusError> MixerInterface::forget(const QString& name) {
    if (!controller_.rememberedApps().forget(name))
        return runningProgram(controller_, name) != nullptr ? nothingRemembered() : noSuchProgram();
    ControlLog::forgotten(name);
    return std::nullopt;
}

std::optional<BusError> MixerInterface::ignore(const QString& name) {
    const QString process = processNameOf(name);
    if (process.isEmpty())
        return noSuchProgram();
    ignored_.ignore(process);
    return std::nullopt;
}

std::optional<BusError> MixerInterface::unignore(const QString& name) {
    return ignored_.unignore(processNameOf(name)) ? std::nullopt : std::optional(noSuchProgram());
}
