#pragma once

#include "app/InstalledPlugin.h"
#include "app/PluginHealth.h"
#include "app/PluginStarter.h"
#include "platform/bus/BusNameOwner.h"
#include "platform/bus/UserService.h"

#include <QObject>
#include <QString>

#include <functional>

class MVComm;
class VolumeWindow;

namespace platform {
class RunLoop;
}

/// Shows in the window when no plug-in applies the volumes set there, and performs the remedy when
/// the user presses its button. Main thread only.
class PluginProblems {
  public:
    /// All of it must outlive this. `serveSocket` returns false on failure, and is called again
    /// when the user wants to retry; `tell` shows a title and a text.
    struct Dependencies {
        MVComm& comm;
        std::function<bool()> serveSocket;
        std::function<void(const QString& title, const QString& text)> tell;
    };

    /// Serves the socket.
    PluginProblems(platform::RunLoop& loop, Dependencies dependencies);

    /// Shows the problems in the window from now on, which must outlive this.
    void showIn(VolumeWindow& window);

    /// Starts the installed plug-in, see InstalledPlugin. Does nothing with a local library of the
    /// environment's: who set that starts the plug-in.
    void runInstalledPlugin(bool isReplaced);
    void removeInstalledPlugin();

    /// Call this when a plug-in has connected or disconnected. Cheap.
    void connectionsChanged() { watch_.changed(); }

  private:
    bool serveSocket();
    void askService(std::function<void(const platform::UserService::State&)> answer);
    void show(PluginHealth::Problem problem);
    void tellDetails();

    const Dependencies dependencies_;
    VolumeWindow* window_ = nullptr; // from showIn() on
    QString socketErrors_;           // of the last attempt to serve it
    PluginStarter starter_;
    InstalledPlugin installed_;
    PluginHealth watch_;
    platform::UserService service_; // its answers go to those above
    platform::BusNameOwner name_;
    QObject guard_; // ends the window's calls
};
