#include "remote/ProgramInterface.h"

#include "model/AppVolumeController.h"
#include "model/MVCommAppValue.h"
#include "model/MVIgnoredApps.h"
#include "remote/ControlLog.h"

#include <QDBusError>

namespace {

const QString volume = QStringLiteral("Volume");
const QString muted = QStringLiteral("Muted");
const QString activity = QStringLiteral("Activity");
const QString position = QStringLiteral("Position");

} // namespace

ProgramInterface::ProgramInterface(AppVolumeController& controller, MVIgnoredApps& ignored,
                                   MVCommAppValue& app)
    : BusInterface(interfaceName()), controller_(controller), ignored_(ignored), app_(app) {}

QVariantMap ProgramInterface::properties() const {
    const QString reason = controller_.reasonNotControllable(app_);
    return {{QStringLiteral("Name"), app_.displayName()},
            {position, static_cast<int>(controller_.apps().indexOf(&app_))},
            {volume, controller_.percentOf(app_)},
            {muted, app_.muted()},
            {QStringLiteral("Playing"), app_.hasActivity()},
            {activity, static_cast<int>(app_.activity())},
            {QStringLiteral("ProcessId"), app_.pid()},
            {QStringLiteral("IconName"), app_.icon().name()},
            {QStringLiteral("Controllable"), reason.isEmpty()},
            {QStringLiteral("Reason"), reason}};
}

bool ProgramInterface::isSignalled(const QString& property) {
    return property != activity && property != position;
}

std::optional<BusError> ProgramInterface::set(const QString& property, const QVariant& value) {
    if (property != volume && property != muted)
        return BusError{QDBusError::errorString(QDBusError::PropertyReadOnly),
                        QStringLiteral("The property is read-only")};
    const bool isUnmuting = property == muted && !value.toBool(); // which is possible in memory
    const QString reason = controller_.reasonNotControllable(app_);
    if (!isUnmuting && !reason.isEmpty())
        return BusError::notControllable(reason);
    if (property == muted) {
        controller_.setMuted(app_, value.toBool());
        ControlLog::muted(app_.displayName(), value.toBool());
        return std::nullopt;
    }
    const int percent = value.toInt();
    if (!ProgramSetting::isInRange(percent))
        return BusError::invalid(QStringLiteral("A volume is 0 to 100 percent"));
    controller_.setPercent(app_, percent);
    ControlLog::volume(app_.displayName(), percent);
    return std::nullopt;
}

std::optional<QString> ProgramInterface::signature(const QString& method) const {
    const bool isKnown = method == QLatin1String("Ignore") || method == QLatin1String("Reset");
    return isKnown ? std::optional(QString()) : std::nullopt;
}

/// The record goes when it is ignored.
BusInterface::Outcome ProgramInterface::call(const QString& method,
                                             const QVariantList& /*arguments*/) {
    if (method == QLatin1String("Reset"))
        return {{}, set(volume, ProgramSetting::fullVolume)};
    ignored_.ignore(QString(app_.processName()));
    return {};
}
