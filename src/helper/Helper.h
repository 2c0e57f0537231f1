#pragma once

#include "helper/DBusMenu.h"
#include "helper/HelperObject.h"
#include "helper/MenuBarIcon.h"
#include "helper/OutputVolume.h"
#include "helper/RunningApplication.h"
#include "helper/ScrollNotches.h"
#include "helper/StatusNotifierItem.h"
#include "helper/TrayMenu.h"
#include "helper/TrayRegistration.h"
#include "platform/bus/DistributedNotification.h"
#include "platform/bus/ProgramLauncher.h"

#include <QDBusConnection>
#include <QTimer>

#include <filesystem>
#include <functional>
#include <optional>

namespace platform {
class SingleInstance;
} // namespace platform

/// The icon in the tray, and all that is behind it: shows the volume of the output, sets it with
/// wheel and middle click, and controls the application, which a click starts if it does not run.
/// Main thread only.
class Helper {
  public:
    /// What tests replace.
    struct Surroundings {
        QString volumeTool;
        std::filesystem::path iconPreference;
        std::function<std::optional<std::filesystem::path>()> findApplication;
        std::function<void()> quit;
    };

    static Surroundings usualSurroundings();

    /// Serves the bus as `instance`, which must outlive the object.
    Helper(const QDBusConnection& bus, platform::SingleInstance& instance,
           Surroundings surroundings);
    ~Helper();
    Helper(const Helper&) = delete;
    Helper& operator=(const Helper&) = delete;

  private:
    StatusNotifierItem::Actions itemActions();
    void showState();
    void updateLook();
    void open(const QString& token, bool mayHide);
    void openPreferences(const QString& token);
    void start(const std::filesystem::path& program, const QString& token);
    void tellGone();
    void turn(int delta);
    void obey(const MenuCommand& command);
    void toggleMute(const QString& program);

    const Surroundings surroundings_;
    QDBusConnection bus_;
    platform::SingleInstance& instance_;
    platform::ProgramLauncher launcher_;
    HelperObject object_;
    MenuBarIcon icon_;
    OutputVolume output_;
    TrayMenu menu_;
    ScrollNotches notches_;
    QTimer showing_; // merges changes of one turn of the event loop
    StatusNotifierItem item_;
    DBusMenu busMenu_;
    RunningApplication application_;
    TrayRegistration registration_;
    const platform::DistributedNotificationObserver iconChanges_;
};
