#include "ui/AppsToFree.h"

#include "comm/MVCommAppValue.h"
#include "prefs/MVIgnoredApps.h"
#include "ui/AppList.h"
#include "ui/AppPreferences.h"
#include "ui/PluginCommands.h"

void AppsToFree::mark(const AppList& list) {
    for (const MVCommAppValue* const app : list.apps()) {
        const QString name = app->displayName();
        const bool isPlain =
            preferences_.percent(name) == AppPreferences::fullVolume && !preferences_.isMuted(name);
        if (!isPlain && ignoredApps_.isAppIgnored(app->processName()))
            processNames_.insert(app->processName());
    }
}

void AppsToFree::freeConnected(const AppList& list) {
    processNames_.removeIf([&](const QString& processName) {
        if (!ignoredApps_.isAppIgnored(processName))
            return true;
        const QList<std::uint32_t> pids = list.connectedPids(processName);
        for (const std::uint32_t pid : pids) {
            commands_.setVolume(pid, AppPreferences::fullVolume);
            commands_.setMute(pid, false);
        }
        return !pids.isEmpty();
    });
}
