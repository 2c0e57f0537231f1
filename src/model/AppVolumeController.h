#pragma once

#include "model/AppList.h"
#include "model/AppPreferences.h"
#include "model/LastChanges.h"
#include "model/NewApps.h"
#include "model/NewlyIgnoredApps.h"
#include "model/PendingPluginReports.h"
#include "model/PluginCommands.h"
#include "model/PreferenceCopies.h"
#include "model/PreferencePublisher.h"
#include "model/RememberedApps.h"
#include "model/SeenApps.h"
#include "platform/bus/NotificationCenter.h"
#include "platform/loop/Timer.h"

#include <QList>
#include <QSizeF>
#include <QString>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <utility>

class AppVolumeView;
class MVComm;
class MVCommAppValue;
class MVIgnoredApps;
struct MVCommActivityMessage;

class Workspace;

namespace platform {
class UserDefaults;

} // namespace platform

/// The controller behind the volume window: keeps the records of all programs that have an item,
/// applies the stored settings to them, sends user actions to the plug-ins, and copies the
/// preferences to where plug-ins read them. Works with any view, or none. Only shutdown() waits for
/// a disk. Main thread only.
///
/// A record's volume is a percent after a merge and a fraction after a user action. Use percentOf()
/// to read the volume.
class AppVolumeController {
  public:
    /// Posted by an item, with its record as object, when its slider has set the record's volume.
    inline static const QString sliderChangedNotification =
        QStringLiteral("MVCollectionViewItemSliderChangedNotification");

    /// All of them must outlive the controller.
    struct Dependencies {
        MVComm& comm;
        MVIgnoredApps& ignoredApps;
        Workspace& workspace;
        platform::UserDefaults& defaults;
        std::filesystem::path preferencesFile; ///< of `defaults`; empty if there is none
        PreferenceCopies::Folders copyFolders = PreferenceCopies::standardFolders();
    };

    /// Called after user actions, here or through another program, have been sent and saved; not
    /// for changes from other mixers. Each may be null.
    struct GestureObserver {
        std::function<void(const MVCommAppValue& app, int before, int after)> volumeChanged;
        std::function<void(const MVCommAppValue& app)> volumeReleased; ///< ends one change
        std::function<void(const MVCommAppValue& app, bool muted)> muteChanged;
    };

    /// The dependencies of the process.
    static Dependencies sharedDependencies();

    explicit AppVolumeController(const Dependencies& dependencies);
    ~AppVolumeController();
    AppVolumeController(const AppVolumeController&) = delete;
    AppVolumeController& operator=(const AppVolumeController&) = delete;

    /// The controller created last; null if it has been destroyed.
    static AppVolumeController* sharedController() noexcept;

    /// The time of its creation, in seconds since 1970.
    [[nodiscard]] double initTime() const noexcept { return initTime_; }

    /// Sets the view that shows the records; null for none. It gets the window's size limits and
    /// the stored frame. It must outlive the controller, or be replaced before it is destroyed.
    void setView(AppVolumeView* view);

    /// Sets the observer that is called after each possible change of apps(), of their properties
    /// available here, and of whether one plays; null for none.
    void setObserver(std::function<void()> observer) { observer_ = std::move(observer); }

    /// Replaces the observer. What it calls must outlive the controller, or be removed.
    void setGestureObserver(GestureObserver observer) { gestures_ = std::move(observer); }

    /// In display order; valid until the next merge.
    [[nodiscard]] const QList<MVCommAppValue*>& apps() const noexcept { return list_.apps(); }

    /// Each merges both the connected and the running programs into the records, and then updates
    /// the view; the names say which come first. All except updateRunningApps(), which is called
    /// when the running programs change, also start a scan of the desktop.
    void updateConnections();
    void updateRunningApps();
    void update();

    /// Calls updateConnections() once, later in this turn of the run loop, even if called several
    /// times: plug-ins that disconnect together are reported one by one.
    void updateConnectionsSoon();

    /// Merges now if updateConnectionsSoon() is pending: for callers that must not see a program
    /// that has ended.
    void catchUp();

    /// Handles a level of a process, any number; does nothing if it has no record.
    void handleActivity(const MVCommActivityMessage* message);

    /// Where all gestures end. After the volume of `app`, one of the records, has been set to a
    /// slider's value, 0 to 1; or after its mute is another. That is no gesture where it is what is
    /// remembered, as after a merge.
    void sliderChanged(MVCommAppValue& app);
    void appWasMuted(MVCommAppValue& app);

    /// Call this at the end of a drag: saves the slider's value at once, even if a merge has
    /// changed the record's volume meanwhile.
    void sliderReleased(MVCommAppValue& app, double fraction);

    /// For everything except dragging a slider: whole percents, 0 to 100 (else clamped).
    void setPercent(MVCommAppValue& app, int percent);
    [[nodiscard]] int percentOf(const MVCommAppValue& app) const;
    void setMuted(MVCommAppValue& app, bool muted);

    /// Why the volume of `app` cannot be set, as text for the user; empty if it can.
    [[nodiscard]] QString reasonNotControllable(const MVCommAppValue& app) const;

    /// When and from where its volume or mute was changed last; nothing if not since the start.
    [[nodiscard]] std::optional<LastChange> lastChange(const MVCommAppValue& app) const;

    /// The settings of all programs, including those without a record.
    RememberedApps& rememberedApps() noexcept { return rememberedApps_; }

    /// The reason for the name of `app`, as text for the user; empty if unknown.
    [[nodiscard]] QString whyNamed(const MVCommAppValue& app) const;

    /// Sends the preferences to the plug-in over the bus.
    PreferencePublisher& publisher() noexcept { return publisher_; }

    /// Handle the plug-in's reports on the bus. A setting applies to all programs of the name; it
    /// is kept for a minute if the process is not known yet.
    void changedElsewhere(std::uint32_t pid, const ProgramSetting& setting);
    void notControllable(std::uint32_t pid, const QString& reason);
    void pluginHasGone();

    /// Saves the preferences, and copies them to where plug-ins read them.
    void savePrefs();

    /// The window's size instead of the proposed one.
    [[nodiscard]] QSizeF windowWillResize(const QSizeF& proposed) const;

    /// Stores the window's frame, and saves and copies the preferences. Waits no longer than
    /// `bound`: a disk may hang. False, with a line in the log, if it has not finished by then.
    bool shutdown(std::chrono::milliseconds bound = std::chrono::seconds(3));

  private:
    enum class First { connections, runningApps };

    void merge(First first);
    void mergeRunning();
    void useNews();
    void ignoreRenamed();
    void welcomeNew();
    void welcome(MVCommAppValue& app);
    void restore(MVCommAppValue& app) const;
    void setFromElsewhere(MVCommAppValue& app, const ProgramSetting& setting);
    void ignoredAppsDidChange();
    void copyThenTellPlugins();
    void keepGesture(const MVCommAppValue& app);
    void settingsChanged();
    void storePrefs();
    void tellObserver() const;
    void tellItem(const MVCommAppValue& app);

    MVComm& comm_;
    PluginCommands commands_;
    MVIgnoredApps& ignoredApps_;
    Workspace& workspace_;
    platform::UserDefaults& defaults_;
    const double initTime_;
    AppPreferences appPrefs_;
    SeenApps seen_;
    NewApps newApps_;
    RememberedApps rememberedApps_;
    PreferencePublisher publisher_;
    NewlyIgnoredApps newlyIgnored_;
    PreferenceCopies copies_;
    LastChanges changes_;
    AppList list_;
    PendingPluginReports news_;
    platform::Timer merging_; // pending until the end of a turn in which connections have changed
    AppVolumeView* view_ = nullptr;
    std::function<void()> observer_;
    GestureObserver gestures_;
    const platform::NotificationObserver sliderObserver_;
    const platform::NotificationObserver ignoredObserver_;
    const std::shared_ptr<AppVolumeController*> self_; // null after destruction, for pending calls
};
