#pragma once

#include "remote/BusInterface.h"
#include "settings/ProgramSetting.h"

#include <functional>

class AppVolumeController;
class MVIgnoredApps;

/// What other programs may ask of the application as a whole.
struct ApplicationCommands {
    std::function<void()> showWindow;
    /// Hides the window if it is in front, else shows it; `token` lets it come to the front.
    std::function<void(const QString& token)> toggleWindow;
    /// Ends the application, once the caller has its reply.
    std::function<void()> quit;
};

/// com.quarnel.Tonvale.Mixer: everything that does not concern a single running program. Lives for
/// one call.
class MixerInterface final : public BusInterface {
  public:
    static QString interfaceName() { return QStringLiteral("com.quarnel.Tonvale.Mixer"); }

    /// All must outlive the object.
    MixerInterface(AppVolumeController& controller, MVIgnoredApps& ignored,
                   const ApplicationCommands& commands);

    QVariantMap properties() const override;
    std::optional<BusError> set(const QString& property, const QVariant& value) override;
    std::optional<QString> signature(const QString& method) const override;
    Outcome call(const QString& method, const QVariantList& arguments) override;

  private:
    QStringList ignoredNames() const;
    QStringList builtInNames(bool enabled) const;
    QVariant remembered() const;
    bool commands(const QString& method, const QVariantList& arguments);
    std::optional<BusError> setRemembered(const QString& name, const ProgramSetting& setting);
    std::optional<BusError> forget(const QString& name);
    std::optional<BusError> ignore(const QString& name);
    std::optional<BusError> unignore(const QString& name);

    AppVolumeController& controller_;
    MVIgnoredApps& ignored_;
    const ApplicationCommands& commands_;
};
