#include "ui/preferences/KnownPrograms.h"

#include "comm/MVCommConnectedProcess.h"
#include "model/AppVolumeController.h"
#include "model/MVCommAppValue.h"
#include "workspace/Workspace.h"

#include <algorithm>

QList<KnownProgram> knownPrograms(AppVolumeController& controller, const Workspace& workspace) {
    QList<KnownProgram> all;
    const auto add = [&](const QString& processName) {
        all.append({MVCommAppValue::displayNameForProcessName(processName), processName});
    };
    add(kMVCommAudioDaemonName);
    for (const MVCommAppValue* const app : controller.apps())
        add(app->processName());
    if (const auto running = workspace.runningApplications()) {
        for (const RunningApplication& app : *running)
            add(app.localizedName);
    }
    for (const NamedSetting& each : controller.rememberedApps().all()) {
        if (each.name != all.constFirst().displayName) // which stands for a process
            add(each.name);
    }
    std::ranges::stable_sort(all, [](const KnownProgram& one, const KnownProgram& other) {
        const int order = one.displayName.compare(other.displayName, Qt::CaseInsensitive);
        return order != 0 ? order < 0 : one.displayName < other.displayName;
    });
    const auto end =
        std::unique(all.begin(), all.end(), [](const KnownProgram& one, const KnownProgram& other) {
            return one.displayName == other.displayName;
        });
    all.erase(end, all.end());
    return all;
}
