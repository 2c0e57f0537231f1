#include "workspace/Workspace.h"

#include "platform/bus/NotificationCenter.h"
#include "platform/bus/SessionBus.h"
#include "platform/loop/RunLoop.h"
#include "workspace/DesktopWorkspace.h"

Workspace& Workspace::shared() {
    static auto& workspace = *new DesktopWorkspace(*platform::RunLoop::current(),
                                                   ApplicationScan::live(), platform::sessionBus());
    return workspace;
}

void Workspace::tellRunningApplications() const {
    if (const auto handler = handler_)
        handler();
    platform::NotificationCenter::standard().post(didChangeNotification);
}
