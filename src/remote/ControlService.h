#pragma once

#include "platform/bus/BusObjects.h"
#include "platform/bus/NotificationCenter.h"
#include "platform/defaults/UserDefaults.h"
#include "remote/ControlSignals.h"

#include <QTimer>

#include <functional>

class AppVolumeController;
class MVCommAppValue;
class MVIgnoredApps;

/// The running application as other programs of this user see it on the session bus: an object for
/// all together, which is an org.freedesktop.DBus.ObjectManager and has the interface
/// com.quarnel.Tonvale.Mixer, and one for each program that has an item
/// (com.quarnel.Tonvale.Program). Changes are told with the next turn of the event loop, those that
/// a call makes before it is answered. docs/control.md tells all of it. Main thread only.
class ControlService final : public platform::BusObjects {
  public:
    /// All of these must outlive the object.
    struct Dependencies {
        AppVolumeController& controller;
        MVIgnoredApps& ignoredApps;
        platform::UserDefaults& defaults;
        std::function<void()> showWindow;
    };

    /// Becomes the controller's observer.
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
