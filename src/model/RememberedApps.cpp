#include "model/RememberedApps.h"

#include "comm/MVCommLogText.h"
#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "model/AppPreferences.h"
#include "model/AppVolumeController.h"
#include "model/MVCommAppValue.h"
#include "model/SeenApps.h"

#include <QHash>

#include <algorithm>
#include <utility>

RememberedApps::RememberedApps(AppVolumeController& controller, AppPreferences& preferences,
                               SeenApps& seen, std::function<void()> changed)
    : controller_(controller)
    , preferences_(preferences)
    , seen_(seen)
    , changed_(std::move(changed)) {}

QList<NamedSetting> RememberedApps::all() const {
    QHash<QString, QString> displayed; // what the preferences can hold of a name: the whole of it
    for (const MVCommAppValue* const app : controller_.apps())
        displayed.insert(AppPreferences::keyForDisplayName(app->displayName()), app->displayName());
    QStringList names = preferences_.dictionary().keys() + seen_.names();
    names.sort();
    names.removeDuplicates();
    QList<NamedSetting> apps;
    for (const QString& name : std::as_const(names))
        apps.append({displayed.value(name, name), of(name)});
    return apps;
}

ProgramSetting RememberedApps::of(const QString& displayName) const {
    return preferences_.setting(displayName);
}

void RememberedApps::set(const QString& displayName, const ProgramSetting& setting) {
    if (MVCommAppValue* const app = recordOf(displayName)) {
        if (controller_.percentOf(*app) != setting.percent)
            controller_.setPercent(*app, setting.percent);
        if (app->muted() != setting.muted)
            controller_.setMuted(*app, setting.muted);
        return;
    }
    controller_.publisher().note(displayName);
    keep(displayName, setting);
}

void RememberedApps::learn(const NamedSetting& newer) {
    const auto& [name, setting] = newer;
    QNLog(qnlog_information, "Took %d %%%@ for '%@' from the plug-in; it had not been saved",
          setting.percent, setting.muted ? ", muted," : "", MVCommLogText(name));
    if (MVCommAppValue* const app = recordOf(name))
        controller_.changedElsewhere(app->pid(), setting);
    else
        keep(name, setting);
}

void RememberedApps::keep(const QString& displayName, const ProgramSetting& setting) {
    preferences_.set(displayName, setting);
    seen_.add({displayName});
    changed_();
}

bool RememberedApps::forget(const QString& displayName) {
    if (!seen_.contains(displayName) && !preferences_.contains(displayName))
        return false;
    if (preferences_.contains(displayName))
        set(displayName, {});
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
    if (const auto kept = defaultVolume())
        QNLog(qnlog_user, "New programs begin at %d %%", *kept);
    else
        QNLog(qnlog_user, "New programs begin at full volume");
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
