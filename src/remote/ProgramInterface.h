#pragma once

#include "remote/BusInterface.h"

class AppVolumeController;
class MVCommAppValue;
class MVIgnoredApps;

/// com.quarnel.Tonvale.Program: one program that has an item. Changes have the same effect as
/// moving the slider: they are sent to the plug-ins, saved and logged. Lives for one call.
class ProgramInterface final : public BusInterface {
  public:
    static QString interfaceName() { return QStringLiteral("com.quarnel.Tonvale.Program"); }

    /// Whether changes of a property are signalled. A level changes all the time, and a position
    /// with each program that appears or disappears.
    [[nodiscard]] static bool isSignalled(const QString& property);

    /// `app` is one of the controller's records.
    ProgramInterface(AppVolumeController& controller, MVIgnoredApps& ignored, MVCommAppValue& app);

    QVariantMap properties() const override;
    std::optional<BusError> set(const QString& property, const QVariant& value) override;
    std::optional<QString> signature(const QString& method) const override;
    Outcome call(const QString& method, const QVariantList& arguments) override;

  private:
    AppVolumeController& controller_;
    MVIgnoredApps& ignored_;
    MVCommAppValue& app_;
};
