#pragma once

#include "platform/bus/BusObjects.h"
#include "platform/bus/NotificationCenter.h"
#include "platform/defaults/UserDefaults.h"
#include "remote/ControlSignals.h"
#include "remote/MixerInterface.h"

#include <QTimer>

#include <functional>

class AppVolumeController;
class MVCommAppValue;
class MVIgnoredApps;

/// The application's interface for other programs of this user on the session bus: a root object,
/// which is an org.freedesktop.DBus.ObjectManager and has the interface com.quarnel.Tonvale.Mixer,
/// and one object for each program that has an item (com.quarnel.Tonvale.Program). Changes are
/// signalled with the next turn of the event loop, those made by a call before its reply. See
/// docs/control.md. Main thread only.
class ControlService final : public platform::BusObjects {
  public:
    /// All of these must outlive the object.
    struct Dependencies {
        AppVolumeController& controller;
        MVIgnoredApps& ignoredApps;
        platform::UserDefaults& defaults;
        ApplicationCommands commands;
        /// Whether the caller of that unique name is the icon in the tray; may be null.
        std::function<bool(const QString& caller)> isTray = {};
    };

    /// Registers as the controller's observer.
    explicit ControlService(Dependencies dependencies);
    ~ControlService() override;

    QString introspect(const QString& path) const override;
    QDBusMessage answer(const QDBusMessage& call) override;

  private:
    QDBusMessage answerRoot(const QDBusMessage& call);
    QDBusMessage answerProgram(const QDBusMessage& call);
    MVCommAppValue* appAt(const QString& path) const;
    BusTree programs() const;
    QVariantMap mixer() const;
    void publish();

    const Dependencies dependencies_;
    ControlSignals signals_;
    QTimer publishing_;
    const platform::NotificationObserver ignoredObserver_;
    const platform::DefaultsObservation defaultVolumeObservation_;
};
