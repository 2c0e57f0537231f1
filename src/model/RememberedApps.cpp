#include "model/RememberedApps.h"

#include "comm/MVCommLogText.h"
#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "model/AppPreferences.h"
#include "model/AppVolumeController.h"
#include "model/MVCommAppValue.h"
#include "model/SeenApps.h"
#include "settings/PreferencesMessage.h"

#include <QHash>

#include <algorithm>
#include <utility>

RememberedApps::RememberedApps(AppVolumeController& controller, AppPreferences& preferences,
                               SeenApps& seen, std::function<void()> changed)
    : controller_(controller)
    , preferences_(preferences)
    , seen_(seen)
    , changed_(std::move(changed)) {}

QList<RememberedApps::App> RememberedApps::all() const {
    QHash<QString, QString> displayed; // what the preferences can hold of a name: the whole of it
    for (const MVCommAppValue* const app : controller_.apps())
        displayed.insert(AppPreferences::keyForDisplayName(app->displayName()), app->displayName());
    QStringList names = preferences_.dictionary().keys() + seen_.names();
    names.sort();
    names.removeDuplicates();
    QList<App> apps;
    for (const QString& name : std::as_const(names))
        apps.append(of(displayed.value(name, name)));
    return apps;
}

RememberedApps::App RememberedApps::of(const QString& displayName) const {
    return {displayName, preferences_.percent(displayName), preferences_.isMuted(displayName)};
}

void RememberedApps::set(const QString& displayName, int percent, bool muted) {
    if (MVCommAppValue* const app = recordOf(displayName)) {
        if (controller_.percentOf(*app) != percent)
            controller_.setPercent(*app, percent);
        if (app->muted() != muted)
            controller_.setMuted(*app, muted);
        return;
    }
    controller_.publisher().note(displayName);
    keep(displayName, percent, muted);
}

void RememberedApps::learn(const NamedSetting& setting) {
    QNLog(qnlog_information, "Took %d %%%@ for '%@' from the plug-in; it had not been saved",
          setting.percent, setting.muted ? ", muted," : "", MVCommLogText(setting.name));
    if (MVCommAppValue* const app = recordOf(setting.name))
        controller_.changedElsewhere(app->pid(), setting.percent, setting.muted);
    else
        keep(setting.name, setting.percent, setting.muted);
}

void RememberedApps::keep(const QString& displayName, int percent, bool muted) {
    preferences_.setPercent(displayName, percent);
    preferences_.setMuted(displayName, muted);
    seen_.add({displayName});
    changed_();
}

bool RememberedApps::forget(const QString& displayName) {
    if (!seen_.contains(displayName) && !preferences_.contains(displayName))
        return false;
    if (preferences_.contains(displayName))
        set(displayName, AppPreferences::fullVolume, false);
    controller_.publisher().note(displayName);
    preferences_.remove(displayName);
    seen_.remove(displayName);
    changed_();
    return true;
}

std::optional<int> RememberedApps::defaultVolume() const {
    return seen_.defaultVolume();
}

void RememberedApps::setDefaultVolume(std::optional<int> percent) {
    seen_.setDefaultVolume(percent);
    changed_();
}

MVCommAppValue* RememberedApps::recordOf(const QString& displayName) const {
    const auto& apps = controller_.apps();
    const auto found = std::ranges::find(
        apps, AppPreferences::keyForDisplayName(displayName), [](const MVCommAppValue* app) {
            return AppPreferences::keyForDisplayName(app->displayName());
        });
    return found != apps.end() ? *found : nullptr;
}
