#include "model/NewlyIgnoredApps.h"

#include "model/AppList.h"
#include "model/AppPreferences.h"
#include "model/MVCommAppValue.h"
#include "model/MVIgnoredApps.h"
#include "model/PluginCommands.h"

void NewlyIgnoredApps::mark(const AppList& list) {
    for (const MVCommAppValue* const app : list.apps()) {
        const QString name = app->displayName();
        if (!preferences_.setting(name).isPlain() && ignoredApps_.isAppIgnored(app->processName()))
            processNames_.insert(app->processName());
    }
}

void NewlyIgnoredApps::resetConnected(const AppList& list) {
    processNames_.removeIf([&](const QString& processName) {
        if (!ignoredApps_.isAppIgnored(processName))
            return true;
        const QList<std::uint32_t> pids = list.connectedPids(processName);
        for (const std::uint32_t pid : pids) {
            commands_.setVolume(pid, ProgramSetting::fullVolume);
            commands_.setMute(pid, false);
        }
        return !pids.isEmpty();
    });
}
