#pragma once

#include "remote/BusInterface.h"
#include "settings/ProgramSetting.h"

#include <functional>

class AppVolumeController;
class MVIgnoredApps;

/// com.quarnel.Tonvale.Mixer: everything that does not concern a single running program. Lives for
/// one call.
class MixerInterface final : public BusInterface {
  public:
    static QString interfaceName() { return QStringLiteral("com.quarnel.Tonvale.Mixer"); }

    /// All must outlive the object.
    MixerInterface(AppVolumeController& controller, MVIgnoredApps& ignored,
                   const std::function<void()>& showWindow);

    QVariantMap properties() const override;
    std::optional<BusError> set(const QString& property, const QVariant& value) override;
    std::optional<QString> signature(const QString& method) const override;
    Outcome call(const QString& method, const QVariantList& arguments) override;

  private:
    QStringList ignoredNames() const;
    QStringList builtInNames(bool enabled) const;
    QVariant remembered() const;
    std::optional<BusError> setRemembered(const QString& name, const ProgramSetting& setting);
    std::optional<BusError> forget(const QString& name);
    std::optional<BusError> ignore(const QString& name);
    std::optional<BusError> unignore(const QString& name);

    AppVolumeController& controller_;
    MVIgnoredApps& ignored_;
    const std::function<void()>& showWindow_;
};
