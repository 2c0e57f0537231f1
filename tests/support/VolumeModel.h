#pragma once

#include "comm/MVComm.h"
#include "model/AppVolumeController.h"
#include "model/MVIgnoredApps.h"
#include "platform/defaults/UserDefaults.h"
#include "support/PlainWorkspace.h"

#include <filesystem>

namespace support {

/// A volume controller with surroundings of its own: a façade on the thread's run loop, a desktop
/// on which runs what the test says, and preferences in memory or a file, which nobody gets copies
/// of.
struct VolumeModel {
    explicit VolumeModel(const std::filesystem::path& preferences = {}) : defaults(preferences) {}

    platform::UserDefaults defaults;
    MVIgnoredApps ignoredApps{defaults};
    PlainWorkspace workspace;
    MVComm comm;
    AppVolumeController controller{{comm, ignoredApps, workspace, defaults, {}}};

    /// Serves the main socket, and has the façade's callbacks go to the newest model's controller,
    /// levels by way of `data`.
    bool serve(MVCommDataCallback data = &show) {
        const MVCommCallback update = [] {
            if (auto* const current = AppVolumeController::sharedController())
                current->updateConnectionsSoon();
        };
        comm.setAppConnectCallback(update);
        comm.setAppDisconnectCallback(update);
        return comm.setupPluginConnectionWithCallBack(data);
    }

    static void show(const MVCommActivityMessage* message) {
        if (auto* const current = AppVolumeController::sharedController())
            current->handleActivity(message);
    }
};

} // namespace support
