#include "model/AppVolumeController.h"

#include "comm/MVComm.h"
#include "comm/MVCommLogText.h"
#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "model/AppVolumeView.h"
#include "model/MVCommAppValue.h"
#include "model/MVIgnoredApps.h"
#include "model/VolumeConversion.h"
#include "model/WindowMemory.h"
#include "model/WindowSize.h"
#include "platform/base/WallClock.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/loop/RunLoop.h"
#include "platform/text/Texts.h"
#include "settings/PreferenceKeys.h"
#include "workspace/Workspace.h"

#include <chrono>
#include <unistd.h>
#include <utility>

namespace {

AppVolumeController* shared = nullptr;

WindowSize::Heights heightsOf(const AppVolumeView* view) {
    return view != nullptr ? WindowSize::Heights{view->itemHeight(), view->titleBarHeight()}
                           : WindowSize::Heights{0, 0};
}

void log(const AppList::Change& change) {
    using Change = AppList::Change;
    const char* const format = change.kind == Change::launched          ? "'%@' launched"
                               : change.kind == Change::launchedIgnored ? "'%@' launched (ignored)"
                                                                        : "'%@' quit";
    QNLog(qnlog_information, format, MVCommLogText(change.name));
}

} // namespace

AppVolumeController::Dependencies AppVolumeController::sharedDependencies() {
    return {MVComm::sharedComm(), MVIgnoredApps::sharedInstance(), Workspace::shared(),
            platform::UserDefaults::standard(), platform::UserDefaults::standardPath()};
}

AppVolumeController::AppVolumeController(const Dependencies& dependencies)
    : comm_(dependencies.comm)
    , commands_(comm_)
    , ignoredApps_(dependencies.ignoredApps)
    , workspace_(dependencies.workspace)
    , defaults_(dependencies.defaults)
    , initTime_(
          std::chrono::duration<double>(platform::WallClock::now().time_since_epoch()).count())
    , appPrefs_(defaults_.value(PreferenceKeys::apps))
    , seen_(defaults_)
    , newApps_(seen_, appPrefs_)
    , rememberedApps_(*this, appPrefs_, seen_, [this] { settingsChanged(); })
    , publisher_(defaults_, dependencies.preferencesFile,
                 [this](const NamedSetting& newer) { rememberedApps_.learn(newer); })
    , newlyIgnored_(appPrefs_, ignoredApps_, commands_)
    , copies_(defaults_, dependencies.preferencesFile, dependencies.copyFolders)
    , list_(workspace_, {[this](const QString& name) { return ignoredApps_.isAppIgnored(name); },
                         [this](MVCommAppValue& app) { restore(app); }})
    , merging_(*platform::RunLoop::current(), [this] { updateConnections(); })
    , sliderObserver_(sliderChangedNotification,
                      [this](const QVariant& object) {
                          auto* const app = object.value<MVCommAppValue*>();
                          if (list_.contains(app))
                              sliderChanged(*app);
                      })
    , ignoredObserver_(MVIgnoredApps::didChangeNotification,
                       [this](const QVariant&) { ignoredAppsDidChange(); })
    , self_(std::make_shared<AppVolumeController*>(this)) {
    shared = this;
    MVIgnoredApps::setPluginNotifier([this] { copyThenTellPlugins(); });
    // A plug-in in a container finds the preferences when it finds the socket.
    comm_.setContainerPreparation([self = self_](const std::function<void()>& ready) {
        if (*self != nullptr)
            (*self)->copies_.saveNow(ready);
        else
            ready();
    });
    workspace_.setRunningApplicationsHandler([this] {
        updateRunningApps();
        list_.updateIcons();
    });
}

AppVolumeController::~AppVolumeController() {
    *self_ = nullptr;
    workspace_.setRunningApplicationsHandler(nullptr);
    if (shared == this) {
        MVIgnoredApps::setPluginNotifier(nullptr);
        shared = nullptr;
    }
}

AppVolumeController* AppVolumeController::sharedController() noexcept {
    return shared;
}

void AppVolumeController::setView(AppVolumeView* view) {
    view_ = view;
    if (view == nullptr)
        return;
    view->appsWillChange();
    view->appsDidChange(apps());
    const WindowSize::Limits limits = WindowSize::window(heightsOf(view));
    view->setSizeLimits(limits.minimum, limits.maximum);
    WindowMemory::restore(*view, defaults_);
    savePrefs();
}

void AppVolumeController::updateConnections() {
    workspace_.lookAgain();
    merge(First::connections);
}

void AppVolumeController::updateRunningApps() {
    merge(First::runningApps);
}

void AppVolumeController::update() {
    updateConnections();
}

void AppVolumeController::updateConnectionsSoon() {
    if (!merging_.isActive())
        merging_.start({});
}

void AppVolumeController::catchUp() {
    if (merging_.isActive())
        updateConnections();
}

void AppVolumeController::merge(First first) {
    merging_.stop();
    if (view_ != nullptr)
        view_->appsWillChange();
    if (first == First::runningApps)
        mergeRunning();
    list_.mergeConnections(MVCommCopyConnectedProcesses(comm_));
    if (first == First::connections)
        mergeRunning();
    list_.settle();
    newlyIgnored_.resetConnected(list_);
    useNews();
    if (view_ != nullptr)
        view_->appsDidChange(apps());
    ignoreRenamed();
    welcomeNew();
    tellObserver();
}

void AppVolumeController::mergeRunning() {
    auto running = workspace_.runningApplications();
    if (!running)
        return;
    const auto own = static_cast<std::uint32_t>(::getpid());
    for (const AppList::Change& change : list_.mergeRunningApps(std::move(*running), own))
        log(change);
}

/// What has been reported of processes that are known by now. Of one that is ignored nothing is
/// remembered.
void AppVolumeController::useNews() {
    news_.offer([this](std::uint32_t pid, const ProgramSetting& setting) {
        MVCommAppValue* const app = list_.appOfProcess(pid);
        if (app != nullptr)
            setFromElsewhere(*app, setting);
        return app != nullptr || list_.isConnected(pid);
    });
    news_.forgetGone(
        [this](std::uint32_t pid) { return list_.indexOfPid(pid) >= 0 || list_.isConnected(pid); });
}

/// Who was ignored by a name that the program had before is ignored by the new one, unless somebody
/// ends that.
void AppVolumeController::ignoreRenamed() {
    const QStringList names = newApps_.ignoredByFormerName(
        list_, [this](const QString& name) { return ignoredApps_.isAppIgnored(name); });
    for (const QString& name : names) {
        QNLog(qnlog_information, "'%@' is ignored, as it was by its former name",
              MVCommLogText(name));
        seen_.add({name});
        ignoredApps_.ignore(name); // the list is merged anew in here
    }
}

void AppVolumeController::welcomeNew() {
    const auto arrived = newApps_.take(list_);
    if (arrived.isEmpty())
        return;
    savePrefs();
    for (MVCommAppValue* const app : arrived)
        welcome(*app);
}

/// What the plug-in holds meanwhile becomes a setting like any other.
void AppVolumeController::welcome(MVCommAppValue& app) {
    const auto beginning = newApps_.beginning(list_, app);
    if (!beginning)
        return;
    QNLog(qnlog_information, "'%@' is new and begins at %d %%", MVCommLogText(app.displayName()),
          beginning->percent);
    commands_.setVolume(app.pid(), beginning->percent);
    if (beginning->muted)
        commands_.setMute(app.pid(), true);
    setFromElsewhere(app, *beginning);
    changes_.forget(app.displayName()); // nobody has changed it
    tellItem(app);
}

void AppVolumeController::restore(MVCommAppValue& app) const {
    app.setVolume(static_cast<double>(appPrefs_.volume(app.displayName())));
    app.setMuted(appPrefs_.setting(app.displayName()).muted);
}

void AppVolumeController::handleActivity(const MVCommActivityMessage* message) {
    const qsizetype index = list_.indexOfPid(message->pid);
    if (index < 0)
        return;
    const float level = VolumeConversion::clampedLevel(message->level);
    const qint64 level100 = VolumeConversion::percentOfLevel(level);
    MVCommAppValue* const app = apps()[index];
    if (level100 == app->activity())
        return;
    const bool wasHeard = app->hasActivity();
    if (view_ != nullptr)
        view_->handleActivity(index, level100, level);
    else
        app->setActivity(level100);
    if (app->hasActivity() != wasHeard)
        tellObserver();
}

void AppVolumeController::sliderChanged(MVCommAppValue& app) {
    const int before = percentOf(app);
    const int percent = VolumeConversion::percentOfFraction(app.volume());
    commands_.setVolume(app.pid(), percent);
    appPrefs_.setPercent(app.displayName(), percent);
    keepGesture(app);
    if (gestures_.volumeChanged)
        gestures_.volumeChanged(app, before, percent);
}

void AppVolumeController::appWasMuted(MVCommAppValue& app) {
    if (appPrefs_.setting(app.displayName()).muted == app.muted())
        return;
    commands_.setMute(app.pid(), app.muted());
    appPrefs_.setMuted(app.displayName(), app.muted());
    keepGesture(app);
    if (gestures_.muteChanged)
        gestures_.muteChanged(app, app.muted());
}

void AppVolumeController::sliderReleased(MVCommAppValue& app, double fraction) {
    app.setVolume(fraction);
    if (percentOf(app) != VolumeConversion::percentOfFraction(fraction))
        sliderChanged(app); // it was changed meanwhile
    copies_.saveNow();
    if (gestures_.volumeReleased)
        gestures_.volumeReleased(app);
}

void AppVolumeController::setPercent(MVCommAppValue& app, int percent) {
    app.setVolume(static_cast<double>(VolumeConversion::fractionForPercent(percent)));
    sliderChanged(app);
    if (gestures_.volumeReleased)
        gestures_.volumeReleased(app);
    tellItem(app);
}

int AppVolumeController::percentOf(const MVCommAppValue& app) const {
    return appPrefs_.setting(app.displayName()).percent;
}

void AppVolumeController::setMuted(MVCommAppValue& app, bool muted) {
    app.setMuted(muted); // an item calls appWasMuted() in here
    appWasMuted(app);
    tellItem(app);
}

QString AppVolumeController::reasonNotControllable(const MVCommAppValue& app) const {
    return news_.reason(app.pid());
}

std::optional<LastChange> AppVolumeController::lastChange(const MVCommAppValue& app) const {
    return changes_.of(app.displayName());
}

QString AppVolumeController::whyNamed(const MVCommAppValue& app) const {
    return app.isBeeps() ? QString()
                         : workspace_.whyNamed({app.pid(), app.processName(), app.path()});
}

void AppVolumeController::changedElsewhere(std::uint32_t pid, const ProgramSetting& setting) {
    if (MVCommAppValue* const app = list_.appOfProcess(pid)) {
        setFromElsewhere(*app, setting);
        tellItem(*app);
    } else if (!list_.isConnected(pid)) { // else it is ignored
        news_.keep(pid, setting);
    }
}

void AppVolumeController::setFromElsewhere(MVCommAppValue& app, const ProgramSetting& setting) {
    if (setting.clamped() != appPrefs_.setting(app.displayName()))
        changes_.note(app.displayName(), ChangeSource::Kind::elsewhere);
    rememberedApps_.keep(app.displayName(), setting);
    restore(app);
}

void AppVolumeController::notControllable(std::uint32_t pid, const QString& reason) {
    constexpr qsizetype longest = 500;
    news_.setReason(pid, Texts::tr(reason.left(longest).toUtf8().constData()));
    if (const qsizetype index = list_.indexOfPid(pid); index >= 0)
        tellItem(*apps()[index]);
}

void AppVolumeController::pluginHasGone() {
    news_.clear();
    tellObserver();
    if (view_ == nullptr)
        return;
    for (qsizetype index = 0; index < apps().size(); ++index)
        view_->itemDidChange(index);
}

void AppVolumeController::ignoredAppsDidChange() {
    newlyIgnored_.mark(list_);
    savePrefs();
    update();
}

void AppVolumeController::copyThenTellPlugins() {
    copies_.saveNow([self = self_] {
        if (*self != nullptr)
            (*self)->commands_.ignoreListChanged();
    });
}

/// After what is remembered has become another by the user's doing.
void AppVolumeController::keepGesture(const MVCommAppValue& app) {
    changes_.note(app.displayName());
    publisher_.note(app.displayName());
    seen_.add({app.displayName()});
    settingsChanged();
}

void AppVolumeController::settingsChanged() {
    storePrefs();
    savePrefs();
    tellObserver();
}

void AppVolumeController::storePrefs() {
    if (appPrefs_.dictionary().isEmpty())
        defaults_.remove(PreferenceKeys::apps);
    else
        defaults_.set(PreferenceKeys::apps, appPrefs_.dictionary());
}

void AppVolumeController::savePrefs() {
    publisher_.changed(); // first, so that the plug-in gets everything that the file will contain
    copies_.mark();
}

QSizeF AppVolumeController::windowWillResize(const QSizeF& proposed) const {
    return WindowSize::snapped(proposed, heightsOf(view_));
}

bool AppVolumeController::shutdown(std::chrono::milliseconds bound) {
    if (view_ != nullptr)
        WindowMemory::keep(*view_, defaults_);
    const bool isSaved = copies_.finish(bound);
    if (!isSaved)
        QNLog(qnlog_error, "Saving and copying the preferences takes too long");
    return isSaved;
}

void AppVolumeController::tellObserver() const {
    if (observer_)
        observer_();
}

void AppVolumeController::tellItem(const MVCommAppValue& app) {
    tellObserver();
    if (view_ == nullptr)
        return;
    if (const qsizetype index = apps().indexOf(&app); index >= 0)
        view_->itemDidChange(index);
}
