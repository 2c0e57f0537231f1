#pragma once

#include "model/AppList.h"
#include "model/AppPreferences.h"
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

/// Behind the volume window: keeps the records of all programs that have an item, gives them the
/// settings that are remembered, makes commands to the plug-ins of what a person does, and sees to
/// it that plug-ins find the preferences where they look for them. Works with any view, or none.
/// Nothing waits for a disk but shutdown(). Main thread only.
///
/// A record's volume is a percent after a merge and a fraction after a gesture. Who wants to know
/// the volume asks percentOf().
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
        std::filesystem::path preferencesFile; ///< of `defaults`; empty when there is none
        PreferenceCopies::Folders copyFolders = PreferenceCopies::standardFolders();
    };

    /// Told of what a person changes, here or by a program that asks for it, when it has been sent
    /// and saved; not of what comes from other mixers. Each may be null.
    struct GestureObserver {
        std::function<void(const MVCommAppValue& app, int before, int after)> volumeChanged;
        std::function<void(const MVCommAppValue& app)> volumeReleased; ///< that was one change
        std::function<void(const MVCommAppValue& app, bool muted)> muteChanged;
    };

    /// Those of the process.
    static Dependencies sharedDependencies();

    explicit AppVolumeController(const Dependencies& dependencies);
    ~AppVolumeController();
    AppVolumeController(const AppVolumeController&) = delete;
    AppVolumeController& operator=(const AppVolumeController&) = delete;

    /// The newest one; null when that has gone.
    static AppVolumeController* sharedController() noexcept;

    /// When it was made, in seconds since 1970.
    double initTime() const noexcept { return initTime_; }

    /// Has `view` show the records, in place of the one before; null for none. It is given the
    /// window's limits and the place that is remembered. It must outlive the controller, or be
    /// taken away before it goes.
    void setView(AppVolumeView* view);

    /// Has `observer` be called after each change of apps(), of what can be asked about one of
    /// them here, and of whether one is heard; also for a change that leaves all as it was. In
    /// place of the one before; null for none.
    void setObserver(std::function<void()> observer) { observer_ = std::move(observer); }

    /// In place of the one before. What it calls must outlive the controller, or be taken away.
    void setGestureObserver(GestureObserver observer) { gestures_ = std::move(observer); }

    /// In order; valid until the next merge.
    const QList<MVCommAppValue*>& apps() const noexcept { return list_.apps(); }

    /// Each merges both the connected and the running programs into the records, and then tells the
    /// view; the names say which come first. All but updateRunningApps(), which a change of what
    /// runs calls, have the desktop look what runs.
    void updateConnections();
    void updateRunningApps();
    void update();

    /// Calls updateConnections() later in this turn of the run loop, once however often it is asked
    /// to: plug-ins that leave together are reported one by one.
    void updateConnectionsSoon();

    /// Merges now if updateConnectionsSoon() still waits: for callers who must not see a program
    /// that has left.
    void catchUp();

    /// A level of a process, any number; nothing happens when it has no record.
    void handleActivity(const MVCommActivityMessage* message);

    /// Where all gestures end. After the volume of `app`, one of the records, has been set to a
    /// slider's value, 0 to 1; or after its mute is another. That is no gesture where it is what is
    /// remembered, as after a merge.
    void sliderChanged(MVCommAppValue& app);
    void appWasMuted(MVCommAppValue& app);

    /// At the end of a drag: the slider's value counts, also when a merge has set the record's
    /// volume meanwhile, and is saved at once.
    void sliderReleased(MVCommAppValue& app, double fraction);

    /// What all but a slider's drag set and ask: whole percents, 0 to 100 (else clamped).
    void setPercent(MVCommAppValue& app, int percent);
    int percentOf(const MVCommAppValue& app) const;
    void setMuted(MVCommAppValue& app, bool muted);

    /// Why the volume of `app` cannot be set, for people; empty when it can.
    QString reasonNotControllable(const MVCommAppValue& app) const;

    /// What there is to know of programs that have no record, too.
    RememberedApps& rememberedApps() noexcept { return rememberedApps_; }

    /// Why `app` has its name, for people; empty when that is not known.
    QString whyNamed(const MVCommAppValue& app) const;

    /// What the plug-in is told beside its socket.
    PreferencePublisher& publisher() noexcept { return publisher_; }

    /// What the plug-in reports beside its socket. A setting is that of all programs of the name,
    /// and waits a minute for a process that is not known yet.
    void changedElsewhere(std::uint32_t pid, const ProgramSetting& setting);
    void notControllable(std::uint32_t pid, const QString& reason);
    void pluginHasGone();

    /// Has the preferences saved, and copied to where plug-ins read them.
    void savePrefs();

    /// The size for a window that would get the proposed one.
    QSizeF windowWillResize(const QSizeF& proposed) const;

    /// Remembers where the window is, and saves and copies the preferences. Waits for that, but no
    /// longer than `bound`: a disk may hang. False, with a line in the log, when it has not ended
    /// by then.
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
    void placeWindow();
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
    AppList list_;
    PendingPluginReports news_;
    platform::Timer merging_; // until the end of a turn in which connections have changed
    AppVolumeView* view_ = nullptr;
    std::function<void()> observer_;
    GestureObserver gestures_;
    const platform::NotificationObserver sliderObserver_;
    const platform::NotificationObserver ignoredObserver_;
    const std::shared_ptr<AppVolumeController*> self_; // tells calls that are under way of the end
};
