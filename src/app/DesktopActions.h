#pragma once

#include "platform/loop/Timer.h"

#include <QString>

#include <functional>

class AppVolumeController;

namespace platform {
class SingleInstance;
}

/// What the desktop asks of the running program: to show itself again, and what it offers in the
/// menu of the program's entry, as the icon in the tray does: "preferences" and "mute-all". Main
/// thread only.
class DesktopActions {
  public:
    struct Dependencies {
        AppVolumeController& controller; ///< outlives the object
        std::function<void()> showPreferences;
        std::function<void(const QString& token)> showWindow;
    };

    explicit DesktopActions(Dependencies dependencies);

    /// Does what further starts and the desktop ask for. Only while both live.
    void serve(platform::SingleInstance& instance);

    /// Performs the action for which the program has been started; an empty name is none. What
    /// plays is not known then yet, so muting waits for it.
    void performAtStart(const QString& action);

  private:
    bool perform(const QString& action);
    void muteWhatPlays();

    const Dependencies dependencies_;
    platform::Timer muting_;
};
